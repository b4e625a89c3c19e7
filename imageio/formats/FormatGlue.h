// Makes the functions of a module out of a class: what all modules share.
#pragma once

#include <cstdio>
#include <exception>
#include <functional>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "imageio/formats/FormatModule.h"

namespace imageio::formats {

using Bytes = std::vector<std::uint8_t>;

// In words for the user, as an ImageError is.
[[noreturn]] inline void Fail(const std::string& what) {
  throw std::runtime_error(what);
}

inline FormatBlock BlockOf(const Bytes& bytes) {
  return {bytes.data(), bytes.size()};
}
inline Bytes BytesOf(const FormatBlock& block) {
  return {block.bytes, block.bytes + block.count};
}

// Hands out the rows of a picture in memory; false when no more are wanted.
using TakeRow = std::function<bool(int y, const std::uint8_t* samples)>;
inline bool GiveRows(const std::uint8_t* pixels, int height, std::size_t stride,
                     const TakeRow& take) {
  for (int y = 0; y < height; ++y) {
    if (!take(y, pixels + static_cast<std::size_t>(y) * stride)) return false;
  }
  return true;
}

inline void Tell(char* message, const char* what) {
  std::snprintf(message, kFormatMessage, "%s", what);
}

// Runs a step of a module; what it throws becomes `failed` with a message.
template <class Result, class Step>
Result Guarded(char* message, Result failed, Step step) {
  try {
    return step();
  } catch (const std::bad_alloc&) {
    Tell(message, "there is not enough memory for the picture");
  } catch (const std::exception& error) {
    Tell(message, error.what());
  }
  return failed;
}

// `File` has a constructor of bytes and count, `FormatHead Head() const` and
// `bool Decode(const TakeRow&)`. All throw what Fail throws.
template <class File>
FormatFunctions Reading() {
  FormatFunctions functions = {};
  functions.version = kFormatVersion;
  functions.open = [](const std::uint8_t* bytes, std::size_t count, FormatHead* head,
                      char* message) -> void* {
    return Guarded(message, static_cast<File*>(nullptr), [&] {
      auto file = std::make_unique<File>(bytes, count);
      *head = file->Head();
      return file.release();
    });
  };
  functions.decode = [](void* file, FormatRow row, void* context, char* message) {
    return Guarded(message, FormatResult::Failed, [&] {
      const auto take = [&](int y, const std::uint8_t* samples) {
        return row(context, y, samples) != 0;
      };
      return static_cast<File*>(file)->Decode(take) ? FormatResult::Done : FormatResult::Stopped;
    });
  };
  functions.close = [](void* file) { delete static_cast<File*>(file); };
  return functions;
}

// `encode` gives the whole file.
template <Bytes (*encode)(const FormatPicture&)>
void AddWriting(FormatFunctions& functions) {
  functions.write = [](const FormatPicture* picture, FormatBytes bytes, void* context,
                       char* message) {
    return Guarded(message, FormatResult::Failed, [&] {
      const Bytes file = encode(*picture);
      return bytes(context, file.data(), file.size()) != 0 ? FormatResult::Done
                                                           : FormatResult::Stopped;
    });
  };
}

}  // namespace imageio::formats

// Defines the entry of a module.
#define FXBOX_PICTURE_FORMAT(functions)                                       \
  extern "C" FXBOX_API const imageio::FormatFunctions* FxboxPictureFormat() { \
    static const imageio::FormatFunctions kFunctions = functions;             \
    return &kFunctions;                                                       \
  }
