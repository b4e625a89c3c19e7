// The grid of pixels that is gathered from passing rows.
#include "core/PictureSample.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/support/Pictures.h"

namespace {

using testing_support::Picture;

// Gives rows [from, to) of a picture, from the last to the first, `width` pixels from `x` on.
void Give(PictureSample& sample, const Picture& picture, int x, int width, int from, int to) {
  for (int y = to - 1; y >= from; --y) {
    const BYTE mask = 0;
    sample.TakeRow(picture.Colour(x, y),
                   picture.mask.empty()
                       ? &mask
                       : &picture.mask[static_cast<std::size_t>(y * picture.width + x)],
                   x, y, width);
  }
}

std::vector<BYTE> Taken(const PictureSample& sample, int most = 1 << 14) {
  std::vector<BYTE> pixels(3 * static_cast<std::size_t>(most));
  pixels.resize(3 * static_cast<std::size_t>(sample.Read(pixels.data(), most)));
  return pixels;
}

// The pixels in the middles of at most 128 x 128 equal parts.
std::vector<BYTE> AtMiddles(const Picture& picture) {
  const int across = std::min(picture.width, 128), down = std::min(picture.height, 128);
  std::vector<BYTE> pixels;
  for (int y = 0; y < down; ++y) {
    for (int x = 0; x < across; ++x) {
      const BYTE* const pixel = picture.Colour((2 * x + 1) * picture.width / (2 * across),
                                               (2 * y + 1) * picture.height / (2 * down));
      pixels.insert(pixels.end(), pixel, pixel + 3);
    }
  }
  return pixels;
}

TEST(PictureSample, PartsOfAPictureGiveWhatTheWholeGives) {
  for (const auto& [width, height] : {std::pair{7, 5}, {128, 128}, {129, 300}, {1000, 33}}) {
    const Picture picture =
        testing_support::Noise(width, height, testing_support::Masks::Opaque, 3);
    PictureSample whole, parts;
    whole.Begin(width, height);
    Give(whole, picture, 0, width, 0, height);
    const auto expected = Taken(whole);
    EXPECT_EQ(expected.size(),
              3u * static_cast<std::size_t>(std::min(width, 128) * std::min(height, 128)));
    EXPECT_EQ(expected, AtMiddles(picture));
    const int x = width / 3, y = height / 2;
    for (const int turn : {0, 1}) {
      parts.Begin(width, height);
      Give(parts, picture, x, width - x, turn ? 0 : y, turn ? y : height);
      parts.Begin(width, height);
      Give(parts, picture, 0, x, turn ? y : 0, turn ? height : y);
    }
    Give(parts, picture, 0, x, 0, y);
    Give(parts, picture, 0, x, y, height);
    EXPECT_EQ(Taken(parts), expected) << width << " x " << height;
  }
}

TEST(PictureSample, LeavesOutWhatIsNotThereAndForgetsOtherSizes) {
  Picture picture(4, 2);
  picture.Colour(1, 0)[2] = 9;
  for (BYTE& mask : picture.mask) mask = 255;
  picture.Mask(1, 0) = 254;
  PictureSample sample;
  EXPECT_TRUE(Taken(sample).empty());
  sample.Begin(4, 2);
  Give(sample, picture, 0, 4, 0, 2);
  EXPECT_EQ(Taken(sample), (std::vector<BYTE>{0, 0, 9}));
  EXPECT_TRUE(Taken(sample, 0).empty());
  sample.TakeRow(picture.Colour(0, 0), nullptr, 0, 7, 4);
  sample.TakeRow(picture.Colour(0, 0), nullptr, -3, 1, 4);
  sample.TakeRow(nullptr, nullptr, 0, 0, 4);
  EXPECT_EQ(Taken(sample).size(), 6u) << "one pixel lay inside";
  sample.Begin(2, 4);
  EXPECT_TRUE(Taken(sample).empty());
  sample.Begin(-5, 0);
  sample.TakeRow(picture.Colour(0, 0), nullptr, 0, 0, 4);
  EXPECT_TRUE(Taken(sample).empty());
}

}  // namespace
