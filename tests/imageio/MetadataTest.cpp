#include <gtest/gtest.h>

#include <algorithm>

#include "tests/imageio/ExifMaker.h"
#include "tests/imageio/TestPicture.h"

namespace {

using imageio::Format;
using imageio::ImageReader;
using imageio::Metadata;
using test::Bytes;
using test::TestPicture;

Metadata Travelled(Format format, const Metadata& metadata) {
  imageio::WriteOptions options;
  options.metadata = metadata;
  const Bytes bytes = test::Written(format, TestPicture::Random(5, 4, true), options);
  ImageReader reader(bytes.data(), bytes.size());
  TestPicture picture = TestPicture::Of(reader);
  if (format != Format::Jpeg) {
    EXPECT_TRUE(picture == TestPicture::Random(5, 4, true));
  }
  return reader.Info().metadata;
}

Bytes RealProfile() {
  return ImageReader(test::DataFolder() / "icc-profile.png").Info().metadata.profile;
}

// A head of a profile that says RGB; its length makes it span several markers.
Bytes LongProfile() {
  Bytes profile(200000);
  for (std::size_t i = 0; i < profile.size(); ++i)
    profile[i] = static_cast<std::uint8_t>(i * i >> 3);
  std::copy_n("RGB ", 4, profile.begin() + 16);
  return profile;
}

TEST(Metadata, Travels) {
  const Bytes profile = RealProfile();
  ASSERT_GT(profile.size(), 128u);
  for (const bool little : {false, true}) {
    const Metadata metadata = {test::MakeExif(little, 1), profile};
    for (const Format format : {Format::Jpeg, Format::Png}) {
      EXPECT_EQ(Travelled(format, metadata).exif, metadata.exif) << static_cast<int>(format);
      EXPECT_EQ(Travelled(format, metadata).profile, profile) << static_cast<int>(format);
    }
    EXPECT_EQ(Travelled(Format::Tiff, metadata).profile, profile);
  }
  EXPECT_EQ(Travelled(Format::Jpeg, {{}, LongProfile()}).profile, LongProfile());
  EXPECT_EQ(Travelled(Format::Tiff, {{}, LongProfile()}).profile, LongProfile());
}

bool Contains(const Bytes& block, const Bytes& part) {
  return std::search(block.begin(), block.end(), part.begin(), part.end()) != block.end();
}

// The block is laid out anew, but says the same: a second journey changes nothing.
TEST(Metadata, TravelsThroughTiff) {
  for (const bool little : {false, true}) {
    const Bytes once = Travelled(Format::Tiff, {test::MakeExif(little, 1), {}}).exif;
    EXPECT_EQ(once[0], little ? 'I' : 'M');
    EXPECT_TRUE(Contains(once, Bytes(test::kCamera, test::kCamera + sizeof test::kCamera)));
    test::BlockWriter position(little);
    position.Entry(0, 1, 4, 0x02030000);
    EXPECT_TRUE(Contains(once, position.block));
    EXPECT_FALSE(Contains(once, Bytes(4, 0xEE))) << "no thumbnail";
    Bytes dropped = test::MakeExif(little, 3);
    imageio::DropThumbnail(dropped);
    EXPECT_EQ(dropped.size(), test::MakeExif(little, 3).size() - test::kThumbnailBytes);
    EXPECT_EQ(Bytes(dropped.begin() + 58, dropped.begin() + 62), Bytes(4)) << "no directory of it";
    EXPECT_EQ(Travelled(Format::Tiff, {once, {}}).exif, once);
    EXPECT_EQ(Travelled(Format::Jpeg, {once, {}}).exif, once);
  }
}

TEST(Metadata, ThatDoesNotFitIsLeftOut) {
  Bytes grey = RealProfile();
  std::copy_n("GRAY", 4, grey.begin() + 16);
  const Metadata wrong[] = {
      {{}, grey}, {{}, Bytes(50, 1)}, {Bytes(70000, 'I'), {}}, {test::BytesOf("no EXIF"), {}}};
  for (const Format format : {Format::Jpeg, Format::Png, Format::Tiff}) {
    for (const Metadata& metadata : wrong) EXPECT_TRUE(Travelled(format, metadata).profile.empty());
  }
  EXPECT_TRUE(Travelled(Format::Jpeg, wrong[2]).exif.empty()) << "longer than a marker";
  EXPECT_TRUE(Travelled(Format::Bmp, {test::MakeExif(true, 1), LongProfile()}).exif.empty());
}

// Whatever a block says, nothing outside of it is touched; the sanitizers watch.
TEST(Metadata, DamagedBlocksDoNoHarm) {
  const Bytes good = test::MakeExif(true, 6);
  std::mt19937 random(5);
  for (std::size_t size = 0; size <= good.size(); ++size) {
    for (int change = 0; change < 20; ++change) {
      Bytes block(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(size));
      for (int i = 0; i < change && size > 0; ++i) {
        block[random() % size] = static_cast<std::uint8_t>(random());
      }
      block.shrink_to_fit();
      imageio::DropThumbnail(block);
      EXPECT_LE(block.size(), size);
      if (change % 10 == 1) {
        Travelled(Format::Tiff, {block, {}});
        Travelled(Format::Jpeg, {block, {}});
      }
    }
  }
}

}  // namespace
