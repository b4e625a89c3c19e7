// One input of the apply command, which may be read several times though it is a pipe.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>

#include "imageio/ImageFile.h"
#include "picture/SharedPicture.h"
#include "program/StandardStreams.h"

namespace program {

// Limits that are answered before any memory is taken.
struct PictureLimits {
  std::int64_t pixels = 500'000'000;

  // A FileError that names the limit and its option when a picture of this size goes beyond.
  // `what` is the picture in words: "the picture", "the result".
  void Check(const std::string& where, const std::string& what, std::int64_t width,
             std::int64_t height) const;
};

// "500000000", "500M": a number of pixels, 1 or more, with k, M or G behind it. A UsageError for
// anything else.
PictureLimits ParseLimit(const std::string& text);

class PictureInput {
 public:
  // Reads a pipe to its end and a picture "BOX::NAME" out of its box, and attaches to a shared
  // picture; of a file nothing yet. A FileError when that fails.
  PictureInput(const std::filesystem::path& file, const PictureLimits& pictureLimits);

  // How messages name it.
  const std::string& Name() const { return name; }

  // A new reader, limited. It lives no longer than the input. Its failures are ImageErrors, a
  // picture beyond the limit a FileError.
  imageio::ImageReader Open() const;

 private:
  imageio::ImageReader NewReader() const;

  std::string name;
  std::filesystem::path path;
  std::optional<Bytes> bytes;
  std::unique_ptr<SharedPicture> shared;
  PictureLimits limits;
};

}  // namespace program
