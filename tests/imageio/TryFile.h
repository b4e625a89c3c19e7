// Reads files that may be broken in any way.
#pragma once

#include <gtest/gtest.h>

#include "tests/imageio/TestPicture.h"

namespace test {

enum class Outcome { Picture, Error, TooLargeToTry };

// Anything else than a picture or an ImageError fails the test.
inline Outcome TryReader(ImageReader& reader) {
  constexpr std::int64_t kMostPixels = 20'000'000;
  reader.ReduceToFit(4000, 4000);
  if (std::int64_t{reader.Info().fullWidth} * reader.Info().fullHeight > kMostPixels) {
    return Outcome::TooLargeToTry;
  }
  TestPicture::Of(reader);
  return Outcome::Picture;
}

inline Outcome TryBytes(const Bytes& bytes, std::string* message = nullptr) try {
  ImageReader reader(bytes.data(), bytes.size());
  return TryReader(reader);
} catch (const ImageError& error) {
  if (message != nullptr) *message = error.what();
  EXPECT_STRNE(error.what(), "");
  return Outcome::Error;
}

}  // namespace test
