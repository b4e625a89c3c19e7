#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

#include "imageio/RowSink.h"
#include "tests/imageio/ExifMaker.h"

// Pictures that go through row by row, from the top to the bottom, and compressions.
namespace {

using namespace test;

constexpr Format kStreamed[] = {Format::Pnm, Format::Pam, Format::Png, Format::Jpeg, Format::Tiff};

// Hands out the rows of a picture and checks that they are asked for in order.
class Feed {
 public:
  explicit Feed(TestPicture from) : picture(std::move(from)), rows(picture.Rows()) {}
  imageio::PictureRow operator()(int y) {
    EXPECT_EQ(y, next++);
    const int row = picture.height - 1 - y;
    // Only the row that was asked for last may be looked at.
    colour.assign(rows.colour[row], rows.colour[row] + 3 * picture.width);
    mask.assign(rows.mask[row], rows.mask[row] + picture.width);
    return {colour.data(), mask.data()};
  }
  double Share() const { return static_cast<double>(next) / picture.height; }

 private:
  TestPicture picture;
  imageio::Rows rows;
  Bytes colour, mask;
  int next = 0;
};

Bytes WrittenByRows(Format format, const TestPicture& picture, bool hasAlpha) {
  const TemporaryFile file;
  Feed feed(picture);
  const auto told = [&feed](double share) {
    EXPECT_DOUBLE_EQ(share, feed.Share());
    return true;
  };
  EXPECT_TRUE(imageio::WriteImageRows(
      file.path, format, picture.width, picture.height, hasAlpha,
      [&feed](int y) { return feed(y); }, {}, told));
  return ReadBytes(file.path);
}

TEST(RowStream, WritesTheSameBytes) {
  for (const Format format : kStreamed) {
    for (const bool masked : {false, true}) {
      SCOPED_TRACE(testing::Message() << static_cast<int>(format) << (masked ? " with mask" : ""));
      const TestPicture picture = TestPicture::Random(61, 43, masked);
      EXPECT_TRUE(imageio::TakesRowsInOrder(format));
      EXPECT_EQ(WrittenByRows(format, picture, masked), Written(format, picture));
    }
  }
  EXPECT_FALSE(imageio::TakesRowsInOrder(Format::Bmp)) << "its first row is the bottom one";
  EXPECT_THROW(WrittenByRows(Format::Bmp, TestPicture(3, 3), false), ImageError);
}

TEST(RowStream, WhatTheFeedThrowsComesOut) {
  const TemporaryFile file;
  for (const Format format : kStreamed) {
    const auto feed = [](int y) -> imageio::PictureRow {
      static const BYTE row[300] = {};
      if (y == 7) throw std::out_of_range("the feed");
      return {row, row};
    };
    EXPECT_THROW(imageio::WriteImageRows(file.path, format, 100, 50, false, feed),
                 std::out_of_range);
  }
}

// Rows of its own, each once and in order.
class Collector final : public imageio::RowSink {
 public:
  Collector(int width, int height, int rowsWanted = 1 << 30)
      : picture(width, height), rows(picture.Rows()), wanted(rowsWanted) {}
  imageio::RowBuffer Begin(int y) override {
    EXPECT_EQ(y, next);
    const int row = picture.height - 1 - y;
    return {rows.colour[row], rows.mask[row]};
  }
  bool End(int y) override {
    EXPECT_EQ(y, next++);
    return next < wanted;
  }

  TestPicture picture;
  imageio::Rows rows;
  int next = 0;

 private:
  const int wanted;
};

TEST(RowStream, ReadsTheSameRows) {
  for (const Format format : kStreamed) {
    for (const bool masked : {false, true}) {
      SCOPED_TRACE(testing::Message() << static_cast<int>(format) << (masked ? " with mask" : ""));
      const Bytes bytes = Written(format, TestPicture::Random(61, 43, masked));
      ImageReader reader(bytes.data(), bytes.size());
      EXPECT_TRUE(reader.GivesRowsInOrder());
      const TestPicture whole = TestPicture::Of(reader);
      Collector all(61, 43);
      EXPECT_TRUE(reader.ReadRows(all));
      EXPECT_EQ(all.next, 43);
      EXPECT_EQ(all.picture.colour, whole.colour);
      if (reader.Info().hasMask) {
        EXPECT_EQ(all.picture.mask, whole.mask);
      }
      Collector few(61, 43, 5);
      EXPECT_FALSE(reader.ReadRows(few));
      EXPECT_EQ(few.next, 5);
      reader.ReduceToFit(20, 20);
      const TestPicture reduced = TestPicture::Of(reader);
      Collector small(reduced.width, reduced.height);
      EXPECT_TRUE(reader.ReadRows(small));
      EXPECT_EQ(small.picture.colour, reduced.colour);
    }
  }
}

TEST(RowStream, TurnedAndUpsideDownPicturesDoNotComeInOrder) {
  const Bytes bottomUp = Written(Format::Bmp, TestPicture::Random(5, 4, false));
  const Bytes turned =
      WrittenWith(Format::Jpeg, TestPicture::Random(5, 4, false), WithExif(MakeExif(true, 6)));
  for (const Bytes& file : {bottomUp, turned})
    EXPECT_FALSE(ImageReader(file.data(), file.size()).GivesRowsInOrder());
}

// From the largest file to the least.
TEST(Compression, KeepsEveryByteInFewer) {
  using imageio::TiffCompression;
  imageio::WriteOptions each[7];
  each[0].tiffCompression = TiffCompression::None;
  each[1].tiffCompression = TiffCompression::PackBits;
  each[2].tiffCompression = TiffCompression::Lzw;
  each[3].tiffCompression = TiffCompression::Deflate;
  each[4].pngLevel = 0;
  each[5].pngLevel = 1;
  each[6].pngLevel = 9;
  std::vector<std::size_t> sizes;
  for (std::size_t i = 0; i < std::size(each); ++i) {
    SCOPED_TRACE(i);
    const Format format = i < 4 ? Format::Tiff : Format::Png;
    for (const TestPicture& picture :
         {TestPicture::Random(300, 57, false), TestPicture::Random(300, 57, true),
          TestPicture::Smooth(300, 57)}) {
      const Bytes bytes = Written(format, picture, each[i]);
      EXPECT_TRUE(TestPicture::OfBytes(bytes) == picture);
      if (picture == TestPicture::Smooth(300, 57)) sizes.push_back(bytes.size());
    }
  }
  EXPECT_LT(sizes[2], sizes[0] * 3 / 4);
  EXPECT_LT(sizes[3], sizes[0] * 3 / 4);
  EXPECT_GT(sizes[4], sizes[5]);
  EXPECT_GT(sizes[5], sizes[6]);
}

}  // namespace
