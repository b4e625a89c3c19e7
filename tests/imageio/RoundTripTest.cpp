#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "tests/imageio/TestPicture.h"

namespace {

using namespace test;

using imageio::WriteImage;

constexpr Format kLossless[] = {Format::Pnm, Format::Pam, Format::Png, Format::Tiff, Format::Bmp};

TEST(RoundTrip, KeepsEveryByte) {
  const std::pair<int, int> sizes[] = {{1, 1}, {1, 7}, {3, 1}, {5, 4}, {31, 33}, {300, 257}};
  for (const Format format : kLossless) {
    for (const auto& [width, height] : sizes) {
      for (const bool masked : {false, true}) {
        SCOPED_TRACE(testing::Message() << static_cast<int>(format) << ": " << width << " x "
                                        << height << (masked ? " with mask" : ""));
        TestPicture picture = TestPicture::Random(width, height, masked);
        const TemporaryFile file(u"-\u00E4\u20AC\u4E2D");
        ASSERT_TRUE(WriteImage(file.path, format, width, height, picture.Rows()));
        ImageReader reader(file.path);
        EXPECT_EQ(reader.Info().format, format);
        EXPECT_EQ(reader.Info().hasMask, masked && format != Format::Pnm);
        if (format == Format::Pnm) picture.mask.assign(picture.mask.size(), 0);
        EXPECT_TRUE(TestPicture::Of(reader) == picture);
        EXPECT_TRUE(TestPicture::Of(reader) == picture) << "the second time";
      }
    }
  }
}

TEST(RoundTrip, NeedsNoMaskRows) {
  TestPicture picture = TestPicture::Random(9, 5, true);
  for (const Format format : kLossless) {
    const Bytes bytes = Written(format, picture);
    ImageReader reader(bytes.data(), bytes.size());
    TestPicture result(9, 5);
    EXPECT_TRUE(reader.Read({result.Rows().colour, nullptr}));
    EXPECT_EQ(result.colour, picture.colour);
    const TemporaryFile file;
    EXPECT_TRUE(WriteImage(file.path, format, 9, 5, {picture.Rows().colour, nullptr}));
    EXPECT_FALSE(ImageReader(file.path).Info().hasMask);
  }
}

TEST(RoundTrip, JpegIsCloseAndQualityCounts) {
  TestPicture picture = TestPicture::Smooth(64, 48);
  const auto written = [&](int quality) { return WrittenAt(Format::Jpeg, picture, quality); };
  EXPECT_LT(picture.DistanceTo(TestPicture::OfBytes(written(100))), 0.7);
  EXPECT_LT(picture.DistanceTo(TestPicture::OfBytes(written(50))), 4);
  EXPECT_GT(written(90).size(), written(89).size() * 11 / 10) << "colour at full resolution";
  EXPECT_EQ(written(92), Written(Format::Jpeg, picture));
  picture.mask.assign(picture.mask.size(), 255);
  EXPECT_EQ(TestPicture::OfBytes(written(90)).colour, Bytes(picture.colour.size(), 255))
      << "white shows through";
}

TEST(RoundTrip, ProgressIsToldAndStops) {
  TestPicture picture = TestPicture::Random(20, 400, true);
  for (const Format format : kAll) {
    SCOPED_TRACE(static_cast<int>(format));
    std::vector<double> told;
    const auto listen = [&told](double share) {
      told.push_back(share);
      return true;
    };
    const TemporaryFile file;
    EXPECT_TRUE(WriteImage(file.path, format, 20, 400, picture.Rows(), {}, listen));
    ImageReader reader(file.path);
    TestPicture result(20, 400);
    for (const char* what : {"writing", "reading"}) {
      SCOPED_TRACE(what);
      if (*what == 'r') {
        EXPECT_TRUE(reader.Read(result.Rows(), listen));
      }
      EXPECT_GE(told.size(), 90u);
      EXPECT_LE(told.size(), 110u);
      EXPECT_TRUE(std::is_sorted(told.begin(), told.end()));
      EXPECT_EQ(told.back(), 1);
      told.clear();
    }
    const auto stop = [](double share) { return share < 0.5; };
    EXPECT_FALSE(reader.Read(result.Rows(), stop));
    EXPECT_FALSE(WriteImage(file.path, format, 20, 400, picture.Rows(), {}, stop));
  }
}

TEST(RoundTrip, WritingFailsWithAnError) {
  TestPicture picture = TestPicture::Random(200, 100, true);
  for (const Format format : kAll) {
    EXPECT_THROW(WriteImage("no/such/folder/file", format, 200, 100, picture.Rows()), ImageError);
    if (std::filesystem::exists("/dev/full") && !std::filesystem::exists("C:\\")) {
      EXPECT_THROW(WriteImage("/dev/full", format, 200, 100, picture.Rows()), ImageError)
          << static_cast<int>(format);
    }
  }
  const TemporaryFile file;
  EXPECT_THROW(WriteImage(file.path, Format::Unknown, 200, 100, picture.Rows()), ImageError);
  EXPECT_THROW(WriteImage(file.path, Format::Png, 0, 100, picture.Rows()), ImageError);
}

TEST(Names, TellTheFormat) {
  const std::pair<const char*, Format> cases[] = {
      {"a.PGM", Format::Pnm},   {"dir.png/a.pam", Format::Pam}, {"a.b.PnG", Format::Png},
      {"a.jpeg", Format::Jpeg}, {"a.tif", Format::Tiff},        {"a.bmp", Format::Bmp},
      {"a", Format::Unknown},   {"a.pn", Format::Unknown},      {"a.pngx", Format::Unknown},
      {"", Format::Unknown},    {"png", Format::Unknown},       {"a.nef", Format::Unknown},
      {"a.webp", Format::WebP}, {"a.JXL", Format::JpegXl},      {"a.avif", Format::Avif},
      {"a.heic", Format::Heif}, {"a.heif", Format::Heif}};
  for (const auto& [name, format] : cases) EXPECT_EQ(imageio::FormatOfName(name), format) << name;
  using namespace std::string_view_literals;
  const std::pair<Format, std::vector<std::string_view>> starts[] = {
      {Format::Raw, {"II*\0\20\0\0\0CR\2\0"sv, "II\32\0\0\0HEAPCCDR"sv, "\0\0\0\30ftypcrx "sv}},
      {Format::Heif, {"\0\0\0\30ftypmif1"sv}},
      {Format::Avif, {"\0\0\0\30ftypavis"sv}},
      {Format::Tiff, {"MM\0+"sv}},
      {Format::Pnm, {"P6\r", "P1\t", "P3#", "P2 "}},
      {Format::Unknown,
       {"\0\0\0\30ftypmp42"sv, "\0\0\0\30ftypavi"sv, "P6\16", "P6\b", "P0 ", "P7 "}}};
  for (const auto& [format, each] : starts) {
    for (const std::string_view start : each) {
      const auto* const bytes = reinterpret_cast<const std::uint8_t*>(start.data());
      EXPECT_EQ(imageio::FormatOfBytes(bytes, start.size()), format) << start;
    }
  }
}

}  // namespace
