#include "program/ApplyRun.h"

#include <chrono>
#include <memory>

#include "base/CodePage.h"
#include "platform/Services.h"
#include "program/Interrupt.h"
#include "program/Messages.h"

namespace program {
namespace {

// Shares of a file's time, as they are with a few point filters. Where the full picture is measured
// for a preview, little is left for the preview itself.
constexpr double kMeasured = 0.8;
constexpr double kDecoded = 0.4;
constexpr double kFiltered = 0.5;

constexpr char kStoppedEarly[] = "a filter stopped before the picture was complete";
constexpr char kNoMemory[] = "there is not enough memory for the picture";

std::string InputName(const PlannedFile& file) {
  return file.FromStandard() ? "standard input" : Utf8Of(file.input);
}

SourcePicture Describe(const imageio::ImageInfo& info, const ApplyRequest& request) {
  const Size full{info.fullWidth, info.fullHeight};
  SourcePicture told{{info.width, info.height}, request.target.value_or(full), request.zoom};
  if (request.fit && !told.zoom) told.zoom = static_cast<double>(info.width) / info.fullWidth;
  return told;
}

PictureSource::Decode DecodeOf(imageio::ImageReader& reader) {
  return [&reader](const imageio::Rows& rows, const imageio::Progress& progress) {
    return reader.Read(rows, progress);
  };
}

platform::ComPtr<PictureSource> SourceOf(imageio::ImageReader& reader, const SourcePicture& told,
                                         imageio::Progress report) {
  return platform::ComPtr<PictureSource>::Attach(
      new PictureSource(told, DecodeOf(reader), std::move(report)));
}

// The size of the result. No filter on the way may go beyond the limit either: most take memory for
// what they give out.
Size SettleWithin(Pipeline& pipeline, const PictureLimits& limits, const std::string& name) {
  const Size result = pipeline.Settle();
  for (const auto& filter : pipeline.Filters()) {
    char filterName[256] = "";
    filter->GetName(filterName, sizeof filterName);
    const Size size = SizeBehind(filter.Get());
    limits.Check(name, "the picture behind " + base::ToUtf8(filterName), size.width, size.height);
  }
  limits.Check(name, "the result", result.width, result.height);
  return result;
}

void MakeFolderOf(const std::filesystem::path& output) {
  const std::filesystem::path folder = output.parent_path();
  std::error_code error;
  if (!folder.empty()) std::filesystem::create_directories(folder, error);
  if (error) throw FileError(Utf8Of(folder), "the folder cannot be made: " + error.message());
}

}  // namespace

// A picture with the chain behind it, ready to be pulled.
struct ApplyRun::Opened {
  Opened(imageio::ImageReader opened, const ApplyRequest& request, IAnimFilterCreator& creator,
         imageio::Progress report)
      : reader(Fitted(std::move(opened), request)),
        told(Describe(reader.Info(), request)),
        source(SourceOf(reader, told, std::move(report))),
        pipeline(creator, source) {
    pipeline.SetText(request.chain);
  }

  static imageio::ImageReader Fitted(imageio::ImageReader reader, const ApplyRequest& request) {
    if (request.fit) reader.ReduceToFit(request.fit->width, request.fit->height);
    return reader;
  }

  imageio::ImageReader reader;
  SourcePicture told;
  platform::ComPtr<PictureSource> source;
  Pipeline pipeline;
  Rectangle part;  // of the result, that is wanted
};

// A finished picture. Reader and chain are gone by then: their memory is free, and the input may be
// replaced.
struct ApplyRun::Rendered {
  std::unique_ptr<MemoryPicture> picture;  // null when the work was stopped
  imageio::Metadata metadata;
};

FileResult ApplyRun::Do(const PlannedFile& file) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point start = Clock::now();
  FileResult result;
  measured = 0;
  show(0);
  try {
    Try(file, result);
  } catch (const UsageError& error) {
    result.error = InputName(file) + ": " + error.what();
    result.wrongUse = true;
  } catch (const FileError& error) {
    result.error = error.what();
  } catch (const std::bad_alloc&) {
    result.error = InputName(file) + ": " + kNoMemory;
  } catch (const std::exception& error) {
    result.error = InputName(file) + ": " + error.what();
  }
  result.milliseconds = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
  return result;
}

bool ApplyRun::IsStopped() const {
  return IsInterrupted() || (request.stop && *request.stop);
}

void ApplyRun::Try(const PlannedFile& file, FileResult& result) {
  if (IsLeftAlone(file)) return Skip(file, result);
  const PictureInput input(file.input, request.limits);
  const Measurements measurements = MeasureFull(input);
  if (IsStopped()) return;
  const auto open = [&] { return Open(input, measurements); };
  std::unique_ptr<Opened> opened = open();
  result.size = opened->told.size;
  result.notes = opened->reader.Info().notes;
  result.resultSize = {opened->part.width, opened->part.height};
  const bool isNamed = file.format != imageio::Format::Unknown;
  const imageio::Format format = isNamed ? file.format : opened->reader.Info().format;
  if (const auto plan = PlanOf(*opened, format)) {
    result.isWritten = Stream(file, format, *plan, std::move(opened), open, result);
    return;
  }
  const Rendered rendered = Render(*opened);
  opened.reset();
  if (rendered.picture) result.isWritten = Write(file, format, rendered, result);
}

void ApplyRun::Skip(const PlannedFile& file, FileResult& result) const {
  if (request.takesDigests) result.digest = DigestOf(file.output);
  result.isSkipped = true;
}

std::unique_ptr<ApplyRun::Opened> ApplyRun::Open(const PictureInput& input,
                                                 const Measurements& measurements) {
  auto opened = std::make_unique<Opened>(input.Open(), request, creator, Report(0, kDecoded));
  RepeatMeasurements(opened->pipeline, measurements);
  opened->part = PartOf(SettleWithin(opened->pipeline, request.limits, input.Name()));
  return opened;
}

// --- in bands

std::optional<BandPlan> ApplyRun::PlanOf(const Opened& opened, imageio::Format format) const {
  const bool isAskedFor = request.bandRows > 0;  // then filters may see no more than that
  if (isAskedFor || !imageio::TakesRowsInOrder(format)) return std::nullopt;
  const auto reach = opened.pipeline.Reach();
  if (!reach || (!reach->readsAll && !opened.reader.GivesRowsInOrder())) return std::nullopt;
  return PlanBands(*reach, std::max(opened.told.size.width, opened.part.width), opened.part.height);
}

bool ApplyRun::Stream(const PlannedFile& file, imageio::Format format, const BandPlan& plan,
                      std::unique_ptr<Opened> opened,
                      const std::function<std::unique_ptr<Opened>()>& again, FileResult& result) {
  const auto write = [&](const std::filesystem::path& temporary) {
    bool hasAlpha = opened->reader.Info().hasMask;
    const bool wasSo = hasAlpha;
    bool isWritten = WriteInBands(temporary, format, *opened, plan, hasAlpha);
    if (hasAlpha != wasSo) {  // now it is known
      if (!opened->pipeline.Reach()->readsAll) opened = again();
      isWritten = WriteInBands(temporary, format, *opened, plan, hasAlpha);
    }
    opened.reset();  // the input may be replaced now
    return isWritten;
  };
  return WriteOut(file, write, result);
}

// Turns `hasAlpha` round when it was wrong.
bool ApplyRun::WriteInBands(const std::filesystem::path& temporary, imageio::Format format,
                            Opened& opened, const BandPlan& plan, bool& hasAlpha) {
  const Size size{opened.part.width, opened.part.height};
  const imageio::WriteOptions options = WritingOf(opened.reader.Info().metadata, size);
  BandWriting writing;
  writing.looksAtMask = imageio::LooksAtMask(format);
  writing.hasAlpha = hasAlpha;
  writing.write = [&](const imageio::RowFeed& feed) {
    return imageio::WriteImageRows(temporary, format, size.width, size.height, hasAlpha, feed,
                                   options);
  };
  const bool readsAll = opened.pipeline.Reach()->readsAll;
  writing.progress = Report(readsAll ? kDecoded : 0, 1);
  if (!readsAll) {
    opened.source->ServeFrom(std::make_unique<host::RowWindow>(
        opened.told.size, opened.reader.Info().hasMask, plan.window,
        [&opened](imageio::RowSink& sink) { return opened.reader.ReadRows(sink); }));
  }
  const AbortOnInterrupt abortOnInterrupt(opened.pipeline.Tail(), [this] { return IsStopped(); });
  const BandOutcome outcome = RenderBands(opened.pipeline, opened.part, plan, writing);
  if (IsStopped()) return false;
  if (outcome == BandOutcome::Stopped) throw std::runtime_error(kStoppedEarly);
  if (outcome == BandOutcome::OtherAlpha) hasAlpha = !hasAlpha;
  return outcome == BandOutcome::Written;
}

// --- as a whole

ApplyRun::Rendered ApplyRun::Render(Opened& opened) {
  // In bands the source decodes first and the bands come after that; in one pull both end together.
  auto picture =
      PullPart(opened.pipeline, opened.part, request.bandRows, Report(kDecoded, kFiltered));
  return {std::move(picture), opened.reader.Info().metadata};
}

bool ApplyRun::Write(const PlannedFile& file, imageio::Format format, const Rendered& rendered,
                     FileResult& result) {
  const MemoryPicture& picture = *rendered.picture;
  const Size size{picture.Width(), picture.Height()};
  const imageio::WriteOptions options = WritingOf(rendered.metadata, size);
  const imageio::Rows rows{picture.ColourRows(), picture.MaskRows()};
  const auto write = [&](const std::filesystem::path& temporary) {
    return imageio::WriteImage(temporary, format, size.width, size.height, rows, options,
                               Report(kFiltered, 1));
  };
  return WriteOut(file, write, result);
}

Measurements ApplyRun::MeasureFull(const PictureInput& input) {
  if (!request.fit) return {};
  imageio::ImageReader reader = input.Open();
  const Size full{reader.Info().width, reader.Info().height};
  if (full.width <= request.fit->width && full.height <= request.fit->height) return {};
  Pipeline pipeline(
      creator, SourceOf(reader, {full, request.target.value_or(full), {}}, Report(0, kMeasured)));
  pipeline.SetText(request.chain);
  if (!StartMeasuring(pipeline, creator)) return {};
  const Size size = SettleWithin(pipeline, request.limits, input.Name());
  if (!PullPart(pipeline, {0, 0, size.width, size.height}, 0, Report(kMeasured, kMeasured))) {
    return {};
  }
  measured = kMeasured;
  return TakeMeasurements(pipeline);
}

// Null when it was interrupted.
std::unique_ptr<MemoryPicture> ApplyRun::PullPart(Pipeline& pipeline, const Rectangle& part,
                                                  int bandRows, const imageio::Progress& report) {
  auto picture = std::make_unique<MemoryPicture>("result", part.width, part.height, true, true);
  if (!picture->IsValid()) throw std::runtime_error(kNoMemory);
  const AbortOnInterrupt abortOnInterrupt(pipeline.Tail(), [this] { return IsStopped(); });
  const bool complete = pipeline.Pull(part, bandRows, *picture, report);
  if (IsStopped()) return nullptr;
  if (!complete) throw std::runtime_error(kStoppedEarly);
  return picture;
}

Rectangle ApplyRun::PartOf(Size result) const {
  const Rectangle whole{0, 0, result.width, result.height};
  if (!request.part) return whole;
  const Rectangle cut = CutTo(*request.part, result);
  if (cut.width == 0) {
    throw UsageError("--rect lies outside the result, which is " + std::to_string(result.width) +
                     "x" + std::to_string(result.height));
  }
  return cut;
}

imageio::WriteOptions ApplyRun::WritingOf(const imageio::Metadata& metadata, Size size) const {
  imageio::WriteOptions options = request.writing;
  options.metadata = metadata;
  imageio::DropThumbnail(options.metadata.exif);
  imageio::SetPictureSize(options.metadata, size.width, size.height);
  return options;
}

bool ApplyRun::WriteOut(const PlannedFile& file, const platform::Files::WriteFile& write,
                        FileResult& result) {
  const auto writeAndSum = [&](const std::filesystem::path& temporary) {
    const bool complete = write(temporary) && !IsStopped();
    if (complete && request.takesDigests) result.digest = DigestOf(temporary);
    return complete;
  };
  std::optional<std::string> failure;
  if (file.intoFolder) MakeFolderOf(file.output);
  try {
    failure = file.ToStandard()
                  ? WriteStandardOutput(writeAndSum)
                  : platform::CurrentServices().files->Replace(file.output, writeAndSum);
  } catch (const imageio::ImageError& error) {
    failure = error.what();
  }
  // An empty text means that the work was stopped.
  if (failure && !failure->empty()) {
    throw FileError(file.ToStandard() ? "standard output" : Utf8Of(file.output), *failure);
  }
  return !failure;
}

imageio::Progress ApplyRun::Report(double first, double last) {
  return [this, first, last](double share) {
    const double ofRest = first + share * (last - first);
    show(measured + (1 - measured) * ofRest);
    return !IsStopped();
  };
}

}  // namespace program
