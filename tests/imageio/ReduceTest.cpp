#include <gtest/gtest.h>

#include "tests/imageio/TestPicture.h"

namespace {

using namespace test;

TEST(ReduceToFit, KeepsProportions) {
  struct Case {
    int width, height, boxWidth, boxHeight, fitWidth, fitHeight;
  };
  const Case cases[] = {
      {40, 30, 20, 20, 20, 15}, {40, 30, 100, 100, 40, 30}, {30, 40, 20, 20, 15, 20},
      {3, 2, 2, 2, 2, 1},       {200, 3, 20, 20, 20, 1},    {3, 200, 20, 20, 1, 20},
      {40, 30, 0, -5, 1, 1},    {40, 30, 40, 29, 39, 29},   {100, 100, 33, 50, 33, 33},
      {40, 30, 1, 99, 1, 1},    {40, 30, 99, 1, 1, 1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message()
                 << c.width << " x " << c.height << " into " << c.boxWidth << " x " << c.boxHeight);
    for (const Format format : {Format::Pnm, Format::Jpeg}) {
      const Bytes bytes = Written(format, TestPicture::Random(c.width, c.height, false));
      ImageReader reader(bytes.data(), bytes.size());
      reader.ReduceToFit(c.boxWidth, c.boxHeight);
      EXPECT_EQ(reader.Info().width, c.fitWidth);
      EXPECT_EQ(reader.Info().height, c.fitHeight);
      EXPECT_TRUE(TestPicture::Of(reader).width == c.fitWidth);
      reader.ReduceToFit(1000, 1000);
      EXPECT_EQ(reader.Info().width, c.width) << "the last box counts";
    }
  }
}

// Each pixel repeated so often that every area of the result has whole pixels only; then plain
// means.
TestPicture MeanByRepetition(TestPicture& from, int width, int height) {
  TestPicture result(width, height);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      double sum[3] = {}, plain[3] = {}, opacity = 0;
      for (int v = 0; v < from.height; ++v) {
        for (int u = 0; u < from.width; ++u) {
          const int atX = (x * from.width + u) / width;
          const int atY = (y * from.height + v) / height;
          const int share = 255 - from.Mask(atX, atY);
          opacity += share;
          for (int c = 0; c < 3; ++c) {
            sum[c] += share * from.Pixel(atX, atY)[c];
            plain[c] += from.Pixel(atX, atY)[c];
          }
        }
      }
      const double area = from.width * from.height;
      for (int c = 0; c < 3; ++c) {
        const double mean = opacity > 0 ? sum[c] / opacity : plain[c] / area;
        result.Pixel(x, y)[c] = static_cast<BYTE>(mean + 0.5);
      }
      result.Mask(x, y) = static_cast<BYTE>(255 - static_cast<int>(opacity / area + 0.5));
    }
  }
  return result;
}

// BMP rows come from the bottom, the others from the top; Unknown are rows that were never a file.
TEST(ReduceToFit, GivesTheMeanOfTheArea) {
  struct Case {
    int width, height, box;
  };
  for (const Case& c :
       {Case{12, 8, 6}, {12, 8, 5}, {7, 5, 4}, {13, 29, 11}, {9, 9, 8}, {5, 6, 1}}) {
    for (const bool masked : {false, true}) {
      TestPicture picture = TestPicture::Random(c.width, c.height, masked);
      if (masked) {  // a corner with nothing opaque
        for (int i = 0; i < 25; ++i) picture.Mask(i % 5, i / 5) = 255;
      }
      const imageio::Rows rows = {picture.Rows().colour, masked ? picture.Rows().mask : nullptr};
      for (const Format format :
           {Format::Pam, Format::Png, Format::Tiff, Format::Bmp, Format::Unknown}) {
        SCOPED_TRACE(testing::Message() << c.width << " x " << c.height << " to " << c.box << ", "
                                        << static_cast<int>(format));
        const bool isFile = format != Format::Unknown;
        const Bytes bytes = isFile ? Written(format, picture) : Bytes();
        ImageReader reader =
            isFile ? ImageReader(bytes.data(), bytes.size()) : ImageReader(rows, c.width, c.height);
        reader.ReduceToFit(c.box, c.box);
        const int width = reader.Info().width;
        const int height = reader.Info().height;
        EXPECT_TRUE(TestPicture::Of(reader) == MeanByRepetition(picture, width, height));
      }
    }
  }
}

// As the same picture in a file that is reduced by means alone. A side is rounded up to whole
// pixels, which is much of a small one: small pictures are not stretched.
TEST(ReduceToFit, JpegStaysTrue) {
  std::vector<std::pair<int, int>> sizes = {{96, 64}};
  for (int width = 1; width <= 12; ++width) {
    for (const int height : {1, 2, 7, 12}) sizes.emplace_back(width, height);
  }
  for (const auto& [width, height] : sizes) {
    const Bytes jpeg = WrittenAt(Format::Jpeg, TestPicture::Smooth(width, height), 98);
    const Bytes plain = Written(Format::Pnm, TestPicture::OfBytes(jpeg));
    for (const int box : {200, 95, 73, 48, 36, 25, 24, 13, 7, 3, 1}) {
      const TestPicture reduced = TestPicture::Fitted(jpeg, box, box),
                        mean = TestPicture::Fitted(plain, box, box);
      ASSERT_EQ(reduced.colour.size(), mean.colour.size());
      EXPECT_EQ(reduced.mask, mean.mask);
      for (std::size_t i = 0; i < mean.colour.size(); ++i) {
        ASSERT_NEAR(reduced.colour[i], mean.colour[i], box == 200 ? 0 : 4)
            << width << "x" << height << " in " << box;
      }
    }
  }
}

}  // namespace
