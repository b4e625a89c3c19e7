#include "program/ApplyRun.h"

#include <chrono>
#include <memory>

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
};

FileResult ApplyRun::Do(const PlannedFile& file) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point start = Clock::now();
  FileResult result;
  measured = 0;
  bar.Show(done, 0);
  try {
    Try(file, result);
  } catch (const UsageError& error) {
    result.error = Utf8Of(file.input) + ": " + error.what();
    result.wrongUse = true;
  } catch (const FileError& error) {
    result.error = error.what();
  } catch (const std::bad_alloc&) {
    result.error = Utf8Of(file.input) + ": " + kNoMemory;
  } catch (const std::exception& error) {
    result.error = Utf8Of(file.input) + ": " + error.what();
  }
  ++done;
  result.milliseconds = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
  return result;
}

void ApplyRun::Try(const PlannedFile& file, FileResult& result) {
  const Rendered rendered = Render(file, result);
  if (!rendered.picture) return;
  if (file.intoFolder) MakeFolderOf(file.output);
  result.isWritten = Write(file, rendered);
}

ApplyRun::Rendered ApplyRun::Render(const PlannedFile& file, FileResult& result) {
  imageio::ImageReader reader(file.input);
  Measurements measurements;
  if (request.fit) {
    reader.ReduceToFit(request.fit->width, request.fit->height);
    if (reader.Info().width != reader.Info().fullWidth) measurements = MeasureFull(file);
  }
  const SourcePicture told = Describe(reader.Info(), request);
  result.size = told.size;

  Pipeline pipeline(creator, SourceOf(reader, told, Report(0, kDecoded)));
  pipeline.SetText(request.chain);
  RepeatMeasurements(pipeline, measurements);
  const Rectangle part = PartOf(pipeline.Settle());
  result.resultSize = {part.width, part.height};
  // In bands the source decodes first and the bands come after that; in one pull both end together.
  auto picture = PullPart(pipeline, part, request.bandRows, Report(kDecoded, kFiltered));
  if (!picture) return {};
  return {std::move(picture), reader.Info().metadata};
}

Measurements ApplyRun::MeasureFull(const PlannedFile& file) {
  imageio::ImageReader reader(file.input);
  const Size full{reader.Info().width, reader.Info().height};
  Pipeline pipeline(
      creator, SourceOf(reader, {full, request.target.value_or(full), {}}, Report(0, kMeasured)));
  pipeline.SetText(request.chain);
  if (!StartMeasuring(pipeline, creator)) return {};
  const Size size = pipeline.Settle();
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
bool ApplyRun::Write(const PlannedFile& file, const Rendered& rendered) {
  const MemoryPicture& picture = *rendered.picture;
  imageio::WriteOptions options{request.jpegQuality, rendered.metadata};
  imageio::DropThumbnail(options.metadata.exif);
  const imageio::Rows rows{picture.ColourRows(), picture.MaskRows()};
  const auto write = [&](const std::filesystem::path& temporary) {
    return imageio::WriteImage(temporary, file.format, picture.Width(), picture.Height(), rows,
                               options, Report(kFiltered, 1)) &&
           !IsInterrupted();
  };
  std::optional<std::string> failure;
  try {
    failure = platform::CurrentServices().files->Replace(file.output, write);
  } catch (const imageio::ImageError& error) {
    failure = error.what();
  }
  // An empty text means that the work was stopped.
  if (failure && !failure->empty()) throw FileError(Utf8Of(file.output), *failure);
  return !failure;
}

imageio::Progress ApplyRun::Report(double first, double last) {
  return [this, first, last](double share) {
    const double ofRest = first + share * (last - first);
    bar.Show(done, measured + (1 - measured) * ofRest);
    return !IsInterrupted();
  };
}

}  // namespace program
