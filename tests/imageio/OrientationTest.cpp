#include <gtest/gtest.h>

#include <algorithm>

#include "tests/imageio/ExifMaker.h"
#include "tests/imageio/TestPicture.h"

namespace {

using namespace test;

// How the stored rows "abc", "def" are to be shown.
constexpr const char* kShown[9] = {"",         "abc/def",  "cba/fed",  "fed/cba", "def/abc",
                                   "ad/be/cf", "da/eb/fc", "fc/eb/da", "cf/be/ad"};

// Letters are colours; the mask says the same.
TestPicture Draw(const std::string& rows) {
  const auto width = static_cast<int>(rows.find('/'));
  TestPicture picture(width, static_cast<int>(rows.size() + 1) / (width + 1));
  for (int y = 0; y < picture.height; ++y) {
    for (int x = 0; x < width; ++x) {
      const auto letter = static_cast<BYTE>(rows[static_cast<std::size_t>(y * (width + 1) + x)]);
      for (int c = 0; c < 3; ++c) picture.Pixel(x, y)[c] = static_cast<BYTE>(letter + 10 * c);
      picture.Mask(x, y) = letter;
    }
  }
  return picture;
}

// As EXIF data in one of both byte orders, and as a field of a TIFF file.
TEST(Orientation, IsAppliedToPngAndTiff) {
  for (int orientation = 1; orientation <= 8; ++orientation) {
    std::vector<Bytes> files;
    for (const bool little : {false, true}) {
      const Bytes exif = MakeExif(little, orientation);
      files.push_back(WrittenWith(Format::Png, Draw("abc/def"), WithExif(exif)));
      EXPECT_EQ(InfoOf(files.back()).metadata.exif, MakeExif(little, 1)) << "told as upright";
    }
    files.push_back(Written(Format::Tiff, Draw("abc/def")));
    // The entry: tag 0x0112, type short, count 1.
    const Bytes entry = {0x12, 0x01, 3, 0, 1, 0, 0, 0};
    const auto at =
        std::search(files.back().begin(), files.back().end(), entry.begin(), entry.end());
    ASSERT_NE(at, files.back().end());
    at[8] = static_cast<std::uint8_t>(orientation);
    for (const Bytes& bytes : files) {
      EXPECT_TRUE(TestPicture::OfBytes(bytes) == Draw(kShown[orientation])) << orientation;
    }
  }
}

// It is one short or one long number up to 8.
TEST(Orientation, OfAnotherKindSaysNothing) {
  for (const auto& [type, count, told, turns] : {std::tuple(3, 1, 6, true),
                                                 {4, 1, 6, true},
                                                 {1, 1, 6, false},
                                                 {3, 2, 6, false},
                                                 {3, 1, 9, false}}) {
    Bytes exif = MakeExif(true, told);
    exif[24] = static_cast<std::uint8_t>(type);
    exif[26] = static_cast<std::uint8_t>(count);
    const auto info = InfoOf(WrittenWith(Format::Png, Draw("abc/def"), WithExif(exif)));
    EXPECT_EQ(info.width, turns ? 2 : 3) << type << " " << count;
    EXPECT_EQ(info.metadata.exif[30], type > 1 && count == 1 ? 1 : 6);
  }
}

TEST(Orientation, TurnsJpegAtFullAndReducedSize) {
  TestPicture picture(64, 32, 0);
  for (int y = 0; y < 32; ++y) {
    for (int x = 0; x < 32; ++x) picture.Pixel(x, y)[2] = 255;  // the left half is red
  }
  // Left becomes top.
  const Bytes bytes = WrittenWith(Format::Jpeg, picture, WithExif(MakeExif(true, 6)));
  ImageReader reader(bytes.data(), bytes.size());
  for (const int width : {32, 16, 5}) {
    reader.ReduceToFit(width, 2 * width);
    EXPECT_EQ(reader.Info().width, width);
    EXPECT_EQ(reader.Info().height, 2 * width);
    EXPECT_EQ(reader.Info().fullWidth, 32);
    EXPECT_EQ(reader.Info().fullHeight, 64);
    TestPicture result = TestPicture::Of(reader);
    EXPECT_GT(result.Pixel(width / 2, 0)[2], 240);
    EXPECT_LT(result.Pixel(width / 2, 2 * width - 1)[2], 15);
  }
}

}  // namespace
