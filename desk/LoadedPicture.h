// A picture in memory, in its full size and as small as it is shown.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "host/Sizes.h"
#include "imageio/ImageFile.h"
#include "picture/MemoryPicture.h"

namespace desk {

using PicturePointer = std::shared_ptr<const MemoryPicture>;

// The picture files that a person is offered to open, or to save to.
inline const std::vector<std::string> kPicturePatterns = {
    "*.jpg", "*.jpeg", "*.png", "*.tif", "*.tiff", "*.bmp", "*.ppm", "*.pgm", "*.pam", "*.pnm"};

// The size in which a picture fits into a box with its proportions; never larger than it is.
host::Size FittedSize(host::Size picture, host::Size box);

// Rows of a picture as readers and writers take them.
imageio::Rows RowsOf(const MemoryPicture& picture);

// The picture reduced to fit the box, or itself where it fits already. Null when `progress` stopped
// the work. Throws std::bad_alloc.
PicturePointer Reduced(const PicturePointer& picture, host::Size box,
                       const imageio::Progress& progress = {});

// What was opened. Any thread.
class LoadedPicture {
 public:
  explicit LoadedPicture(host::Size size) : fullSize(size) {}

  host::Size FullSize() const { return fullSize; }
  // Null until the whole picture was decoded.
  PicturePointer Full() const;
  void SetFull(PicturePointer picture);
  // What a quick look at the file gave, until it is decoded.
  void SetQuick(PicturePointer picture);
  // The picture for a box of this size, made when it was not asked for before; null when there is
  // none yet, or `progress` stopped it. A few are kept.
  PicturePointer For(host::Size box, const imageio::Progress& progress = {});

 private:
  PicturePointer Kept(host::Size size) const;
  void Keep(const PicturePointer& picture);

  const host::Size fullSize;
  mutable std::mutex lock;
  PicturePointer full, quick;
  std::vector<PicturePointer> kept;
};

// Opens a picture file or "BOX::NAME" and decodes it: `onQuick` gets the picture with a first look
// in it, which fits the box, and may be called with the full one at once where that is as quick.
// `onFull` when all of it is there. Failures are exceptions with words for the person.
class PictureLoader {
 public:
  using Ready = std::function<void(const std::shared_ptr<LoadedPicture>&)>;
  static void Load(const std::filesystem::path& file, host::Size box, const Ready& onQuick,
                   const Ready& onFull, const imageio::Progress& progress);
};

}  // namespace desk
