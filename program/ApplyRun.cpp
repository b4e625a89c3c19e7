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

platform::ComPtr<PictureSource> SourceOf(imageio::ImageReader& reader, const SourcePicture& told,
                                         imageio::Progress report) {
  const auto decode = [&reader](const imageio::Rows& rows, const imageio::Progress& progress) {
    return reader.Read(rows, progress);
  };
  return platform::ComPtr<PictureSource>::Attach(
      new PictureSource(told, decode, std::move(report)));
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

// A finished picture. Reader and chain are gone by then: their memory is free, and the input may be
// replaced.
struct ApplyRun::Rendered {
  std::unique_ptr<MemoryPicture> picture;  // null when the work was stopped
  imageio::Metadata metadata;
  imageio::Format format = imageio::Format::Unknown;
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

void ApplyRun::Try(const PlannedFile& file, FileResult& result) {
  if (IsLeftAlone(file)) return Skip(file, result);
  const Rendered rendered = Render(file, result);
  if (!rendered.picture) return;
  if (file.intoFolder) MakeFolderOf(file.output);
  result.isWritten = Write(file, rendered, result);
}

void ApplyRun::Skip(const PlannedFile& file, FileResult& result) const {
  if (request.takesDigests) result.digest = DigestOf(file.output);
  result.isSkipped = true;
}

ApplyRun::Rendered ApplyRun::Render(const PlannedFile& file, FileResult& result) {
  const PictureInput input(file.input, request.limits);
  imageio::ImageReader reader = input.Open();
  Measurements measurements;
  if (request.fit) {
    reader.ReduceToFit(request.fit->width, request.fit->height);
    if (reader.Info().width != reader.Info().fullWidth) measurements = MeasureFull(input);
  }
  const SourcePicture told = Describe(reader.Info(), request);
  result.size = told.size;
  result.notes = reader.Info().notes;

  Pipeline pipeline(creator, SourceOf(reader, told, Report(0, kDecoded)));
  pipeline.SetText(request.chain);
  RepeatMeasurements(pipeline, measurements);
  const Rectangle part = PartOf(SettleWithin(pipeline, request.limits, input.Name()));
  result.resultSize = {part.width, part.height};
  // In bands the source decodes first and the bands come after that; in one pull both end together.
  auto picture = PullPart(pipeline, part, request.bandRows, Report(kDecoded, kFiltered));
  if (!picture) return {};
  const bool isNamed = file.format != imageio::Format::Unknown;
  return {std::move(picture), reader.Info().metadata, isNamed ? file.format : reader.Info().format};
}

Measurements ApplyRun::MeasureFull(const PictureInput& input) {
  imageio::ImageReader reader = input.Open();
  const Size full{reader.Info().width, reader.Info().height};
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
  const AbortOnInterrupt abortOnInterrupt(pipeline.Tail());
  const bool complete = pipeline.Pull(part, bandRows, *picture, report);
  if (IsInterrupted()) return nullptr;
  if (!complete) throw std::runtime_error("a filter stopped before the picture was complete");
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

// False when it was stopped.
bool ApplyRun::Write(const PlannedFile& file, const Rendered& rendered, FileResult& result) {
  const MemoryPicture& picture = *rendered.picture;
  imageio::WriteOptions options = request.writing;
  options.metadata = rendered.metadata;
  imageio::DropThumbnail(options.metadata.exif);
  imageio::SetPictureSize(options.metadata, picture.Width(), picture.Height());
  const imageio::Rows rows{picture.ColourRows(), picture.MaskRows()};
  return WriteOut(file, [&](const std::filesystem::path& temporary) {
    const bool complete =
        imageio::WriteImage(temporary, rendered.format, picture.Width(), picture.Height(), rows,
                            options, Report(kFiltered, 1)) &&
        !IsInterrupted();
    if (complete && request.takesDigests) result.digest = DigestOf(temporary);
    return complete;
  });
}

bool ApplyRun::WriteOut(const PlannedFile& file, const platform::Files::WriteFile& write) {
  std::optional<std::string> failure;
  try {
    failure = file.ToStandard() ? WriteStandardOutput(write)
                                : platform::CurrentServices().files->Replace(file.output, write);
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
    return !IsInterrupted();
  };
}

}  // namespace program
