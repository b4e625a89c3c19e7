// The work of the apply command on one picture after the other.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Services.h"
#include "program/BandRendering.h"
#include "program/Host.h"
#include "program/OutputNames.h"
#include "program/PictureInput.h"
#include "program/Sha256.h"

namespace program {

// What is done to every picture.
struct ApplyRequest {
  ChainText chain;
  std::optional<Size> fit;        // reduce the input to this box first
  std::optional<Size> target;     // the full size that is told, instead of the picture's own
  std::optional<double> zoom;     // the zoom that is told, instead of that of `fit`
  std::optional<Rectangle> part;  // of the result
  int bandRows = 0;               // 0: one pull for all rows
  imageio::WriteOptions writing;  // all but the metadata, which are the picture's
  PictureLimits limits;
  bool takesDigests = false;  // of every output, and of those that are left alone
  // Stops the work as an interrupt does, once it is true; outlives it. Null for none.
  const std::atomic<bool>* stop = nullptr;
};

struct FileResult {
  Size size;        // that the filters saw
  Size resultSize;  // that was written
  double milliseconds = 0;
  bool isWritten = false;
  bool isSkipped = false;
  std::optional<FileDigest> digest;  // of the output
  std::vector<std::string> notes;    // what the file holds and the result lacks, in words
  std::string error;                 // the whole line behind "fxbox: "
  bool wrongUse = false;             // the error is one of use
};

// One thread at a time; any number of them side by side.
class ApplyRun {
 public:
  // `progress` hears which share of the picture in work is done.
  ApplyRun(const ApplyRequest& everyPicture, IAnimFilterCreator& filterCreator,
           std::function<void(double share)> progress)
      : request(everyPicture), creator(filterCreator), show(std::move(progress)) {}

  // Reads, filters and writes one picture, or leaves it alone; failures are in the result. An
  // interrupt leaves neither output nor error.
  FileResult Do(const PlannedFile& file);

 private:
  struct Opened;
  struct Rendered;

  bool IsStopped() const;
  void Try(const PlannedFile& file, FileResult& result);
  void Skip(const PlannedFile& file, FileResult& result) const;
  std::unique_ptr<Opened> Open(const PictureInput& input, const Measurements& measurements);

  // In bands, of which no stage holds more than a few; nothing where that cannot be.
  std::optional<BandPlan> PlanOf(const Opened& opened, imageio::Format format) const;
  bool WriteInBands(const std::filesystem::path& temporary, imageio::Format format, Opened& opened,
                    const BandPlan& plan, bool& hasAlpha);
  bool Stream(const PlannedFile& file, imageio::Format format, const BandPlan& plan,
              std::unique_ptr<Opened> opened, const std::function<std::unique_ptr<Opened>()>& again,
              FileResult& result);

  // The whole picture first, then the file. Null when it was stopped.
  Rendered Render(Opened& opened);
  bool Write(const PlannedFile& file, imageio::Format format, const Rendered& rendered,
             FileResult& result);

  // What the filters measure on the full picture, so that a preview shows what its result will be.
  // Empty without a preview, when they measure nothing, or when it was stopped.
  Measurements MeasureFull(const PictureInput& input);
  std::unique_ptr<MemoryPicture> PullPart(Pipeline& pipeline, const Rectangle& part, int bandRows,
                                          const imageio::Progress& report);
  Rectangle PartOf(Size result) const;
  imageio::WriteOptions WritingOf(const imageio::Metadata& metadata, Size size) const;
  // `write` makes the file and says whether it is complete.
  bool WriteOut(const PlannedFile& file, const platform::Files::WriteFile& write,
                FileResult& result);
  // Shows how far the file is; the work takes the shares from `first` to `last` of what is left of
  // the file's behind the measuring.
  imageio::Progress Report(double first, double last);

  const ApplyRequest& request;
  IAnimFilterCreator& creator;
  const std::function<void(double share)> show;
  double measured = 0;  // the share of the file's time that went into measuring
};

}  // namespace program
