#include <gtest/gtest.h>

#include <algorithm>

#include "imageio/ExtendedXmp.h"
#include "imageio/Iptc.h"
#include "imageio/Md5.h"
#include "tests/imageio/ExifMaker.h"
#include "tests/imageio/TestPicture.h"

namespace {

using namespace test;

using imageio::Metadata;

Metadata WithProfile(const Bytes& profile) {
  return {{}, profile, {}, {}, {}};
}

Metadata Travelled(Format format, const Metadata& metadata) {
  const Bytes bytes = WrittenWith(format, TestPicture::Random(5, 4, true), metadata);
  ImageReader reader(bytes.data(), bytes.size());
  EXPECT_TRUE(TestPicture::Of(reader) == TestPicture::Random(5, 4, true) || format == Format::Jpeg);
  return reader.Info().metadata;
}

Bytes RealProfile() {
  return ImageReader(DataFolder() / "icc-profile.png").Info().metadata.profile;
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
    const Metadata metadata = {MakeExif(little, 1), profile, {}, {}, {}};
    for (const Format format : {Format::Jpeg, Format::Png}) {
      EXPECT_EQ(Travelled(format, metadata).exif, metadata.exif) << static_cast<int>(format);
      EXPECT_EQ(Travelled(format, metadata).profile, profile) << static_cast<int>(format);
    }
    EXPECT_EQ(Travelled(Format::Tiff, metadata).profile, profile);
  }
  EXPECT_EQ(Travelled(Format::Jpeg, WithProfile(LongProfile())).profile, LongProfile());
  EXPECT_EQ(Travelled(Format::Tiff, WithProfile(LongProfile())).profile, LongProfile());
}

TEST(Metadata, TextsAndResolutionTravel) {
  Metadata metadata;
  metadata.xmp = BytesOf("<x:xmpmeta>\xC3\xA4 <dc:title/></x:xmpmeta>");
  metadata.iptc = BytesOf(std::string("\x1C\x02\x05\0\x05Title\x1C\x02\x7A\0\0", 16));
  metadata.iptc.resize(16);  // TIFF pads it to whole numbers of four bytes
  metadata.resolution = {300, 150};
  for (const bool big : {false, true}) {
    if (big) metadata.exif = MakeExif(false, 1);  // a TIFF file in that order
    for (const Format format : {Format::Jpeg, Format::Png, Format::Tiff}) {
      SCOPED_TRACE(static_cast<int>(format));
      const Metadata travelled = Travelled(format, metadata);
      EXPECT_EQ(travelled.xmp, metadata.xmp);
      EXPECT_EQ(travelled.iptc, metadata.iptc);
    }
  }
  for (const Format format : {Format::Jpeg, Format::Png, Format::Tiff, Format::Bmp}) {
    for (const auto& [x, y] : {std::pair(300, 150), {300, 0}, {0, 150}}) {
      metadata.resolution = {double(x), double(y)};
      const imageio::Resolution told = Travelled(format, metadata).resolution;
      EXPECT_TRUE(told.x == (x > 0 ? x : y) && told.y == (y > 0 ? y : x))
          << told.x << " " << told.y;
    }
  }
  EXPECT_EQ(Travelled(Format::Jpeg, {}).resolution.x, 0);
  // Of nothing, an inch and a centimetre.
  const Metadata plain = {{}, {}, {}, {}, {300, 150}};
  Bytes jpeg = WrittenWith(Format::Jpeg, TestPicture(1, 1), plain);
  Bytes tiff = WrittenWith(Format::Tiff, TestPicture(1, 1), plain);
  const Bytes entry = {0x28, 1, 3, 0, 1, 0, 0, 0};
  const auto unit = std::search(tiff.begin(), tiff.end(), entry.begin(), entry.end()) + 8;
  for (int i = 0; i < 3; ++i) {
    jpeg[13] = static_cast<std::uint8_t>(i);
    *unit = static_cast<std::uint8_t>(i + 1);
    for (const Bytes& file : {jpeg, tiff}) {
      const imageio::Resolution told = InfoOf(file).metadata.resolution;
      EXPECT_NEAR(told.x, i == 0 ? 0 : i == 1 ? 300 : 762, 1e-9);
      EXPECT_NEAR(told.y, told.x / 2, 1e-9);
    }
  }
}

// Behind another resource with a name, and not where any length goes beyond the end.
TEST(Metadata, RecordsAreFoundAmongResources) {
  const Bytes records = {0x1C, 2, 5, 0, 1, 'a'};
  Bytes run = BytesOf(std::string("8BIM\4\5\3abc\0\0\0\1x\0", 16)),
        own = imageio::ResourcesOfIptc(records);
  run.insert(run.end(), own.begin(), own.end());
  EXPECT_EQ(imageio::IptcOfResources(run), records);
  const std::string text = imageio::TextOfIptc(Bytes(40, 7));
  EXPECT_EQ(text.substr(0, 15), "\niptc\n      52\n");
  EXPECT_EQ(text.size(), 15u + 72 + 1 + 32 + 1) << "lines of 72 digits";
  EXPECT_EQ(imageio::IptcOfText(text), Bytes(40, 7));
  while (!run.empty()) {
    run.pop_back();
    run.shrink_to_fit();
    EXPECT_TRUE(imageio::IptcOfResources(run).empty()) << run.size();
  }
}

std::string Packet(const std::string& descriptions) {
  return "<x:xmpmeta><rdf:RDF xmlns:rdf=\"r\">" + descriptions + "</rdf:RDF></x:xmpmeta>";
}

// What no marker of a JPEG file can hold is spread over several.
TEST(Metadata, LongXmpTravels) {
  Metadata metadata;
  std::string text = "<rdf:Description tiff:ImageWidth=\"7\">";
  for (int i = 0; text.size() < 200000; ++i) text += std::to_string(i);
  text += "</rdf:Description>";
  metadata.xmp = BytesOf(Packet(text));
  for (int round = 0; round < 2; ++round) {
    metadata = Travelled(Format::Jpeg, metadata);
    const std::string joined(metadata.xmp.begin(), metadata.xmp.end());
    EXPECT_NE(joined.find(text), joined.npos) << round;
    EXPECT_EQ(joined.find("HasExtendedXMP"), joined.npos) << round;
  }
}

TEST(Metadata, PartsOfXmpThatDoNotFitAreLeftOut) {
  EXPECT_EQ(imageio::Md5(BytesOf("")), "D41D8CD98F00B204E9800998ECF8427E");
  EXPECT_EQ(imageio::Md5(BytesOf("message digest")), "F96B697D7CB7938D525A2F31AAF161D0");
  const std::string rest = Packet("<rdf:Description b=\"2\"/>");
  const std::string digest = imageio::Md5(BytesOf(rest));
  const auto number = [](std::size_t value) { return std::string("\0\0\0", 3) + char(value); };
  const auto part = [&](std::size_t at, std::size_t count) {
    return BytesOf(digest + number(rest.size()) + number(at) + rest.substr(at, count));
  };
  const auto note = "<rdf:Description a=\"1\" xmpNote:HasExtendedXMP=\"" + digest + "\"/>";
  const Bytes main = BytesOf(Packet(note));
  const Bytes whole = BytesOf(Packet("<rdf:Description a=\"1\" /><rdf:Description b=\"2\"/>"));
  const std::vector<Bytes> parts = {part(20, 100), part(0, 20)};
  EXPECT_EQ(imageio::JoinXmp(main, parts), whole);
  EXPECT_EQ(imageio::JoinXmp(main, std::span(parts).first(1)), main);
  EXPECT_EQ(imageio::JoinXmp(main, std::vector<Bytes>{part(0, 20), part(19, 100)}), main);
  EXPECT_EQ(imageio::JoinXmp(main, std::vector<Bytes>{part(0, 20), part(20, 5)}), main);
  EXPECT_EQ(imageio::JoinXmp(whole, parts), whole);
  EXPECT_EQ(imageio::JoinXmp(main, std::vector<Bytes>{BytesOf(digest)}), main);
  EXPECT_EQ(imageio::JoinXmp(BytesOf("xmpNote:HasExtendedXMP=\"12"), parts),
            BytesOf("xmpNote:HasExtendedXMP=\"12"));
}

bool Contains(const Bytes& block, const Bytes& part) {
  return std::search(block.begin(), block.end(), part.begin(), part.end()) != block.end();
}

// Rows that stand upright and have another size are told so wherever the data say it.
TEST(Metadata, SizesAndOrientationAreSet) {
  Metadata metadata;
  const std::string packet =
      "<r tiff:Orientation=\"6\" exif:PixelXDimension='6000'><exif:PixelYDimension>";
  metadata.xmp = BytesOf(packet + "4000</exif:PixelYDimension></r>");
  BlockWriter pair(true);  // two numbers say nothing of one height
  pair.Entry(0x0101, 3, 2, 4000);
  const auto exif = [](bool little) {
    BlockWriter writer(little, 6);
    writer.Entry(0x0100, 4, 1, 6000);
    writer.Entry(0x0101, 3, 2, 4000);
    writer.Entry(0x011A, 5, 1, 116);
    writer.Entry(0x011B, 5, 1, 124);
    writer.Entry(0x0128, 3, 1, little ? 2 : 3);  // an inch, a centimetre
    writer.Entry(0x8769, 4, 1, 86);
    writer.Number(0, 4);
    writer.Number(2, 2);  // from 86 to 116
    writer.Entry(0xA002, 3, 1, 6000);
    writer.Entry(0xA003, 4, 1, 4000);
    writer.Longs({0, 720, 10, 75, 2});
    return writer.block;
  };
  metadata.exif = exif(true);
  imageio::SetPictureSize(metadata, 70000, 4);
  const Metadata travelled = Travelled(Format::Jpeg, metadata);
  EXPECT_EQ(std::string(travelled.xmp.begin(), travelled.xmp.end()),
            "<r tiff:Orientation=\"1\" exif:PixelXDimension='70000'><exif:PixelYDimension>4"
            "</exif:PixelYDimension></r>");
  BlockWriter sizes(true);
  sizes.Entry(0xA002, 4, 1, 70000);
  sizes.Entry(0xA003, 4, 1, 4);
  EXPECT_TRUE(Contains(travelled.exif, sizes.block));
  EXPECT_TRUE(Contains(travelled.exif, pair.block));
  EXPECT_DOUBLE_EQ(travelled.resolution.x, 72) << "where no other place tells it";
  EXPECT_DOUBLE_EQ(travelled.resolution.y, 37.5);
  const imageio::Resolution big = Travelled(Format::Jpeg, WithExif(exif(false))).resolution;
  EXPECT_DOUBLE_EQ(big.x, 72 * 2.54);
  EXPECT_DOUBLE_EQ(big.y, 37.5 * 2.54);
}

// The block is laid out anew, but says the same: a second journey changes nothing.
TEST(Metadata, TravelsThroughTiff) {
  for (const bool little : {false, true}) {
    const Bytes once = Travelled(Format::Tiff, WithExif(MakeExif(little, 1))).exif;
    EXPECT_EQ(once[0], little ? 'I' : 'M');
    EXPECT_TRUE(Contains(once, Bytes(kCamera, kCamera + sizeof kCamera)));
    BlockWriter position(little);
    position.Entry(0, 1, 4, 0x02030000);
    position.Number(0, 4);  // no further directory
    EXPECT_TRUE(Contains(once, position.block));
    EXPECT_FALSE(Contains(once, Bytes(4, 0xEE))) << "no thumbnail";
    for (const std::size_t behind : {0, 1, 2}) {  // one byte may fill it up
      const Bytes whole = MakeExif(little, 3);
      Bytes dropped = whole;
      dropped.resize(whole.size() + behind);
      imageio::DropThumbnail(dropped);
      EXPECT_EQ(dropped.size(), whole.size() + (behind < 2 ? -kThumbnailBytes : behind));
      EXPECT_EQ(Bytes(dropped.begin() + 58, dropped.begin() + 62), Bytes(4)) << "its directory";
    }
    EXPECT_EQ(Travelled(Format::Tiff, WithExif(once)).exif, once);
    EXPECT_EQ(Travelled(Format::Jpeg, WithExif(once)).exif, once);
  }
}

// Nine of each end the block; a value of no known type is left out, and so is one that is cut.
TEST(Metadata, ValuesOfEveryTypeTravelThroughTiff) {
  constexpr std::size_t kBytes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4, 0};
  for (std::uint32_t type = 0; type < std::size(kBytes); ++type) {
    SCOPED_TRACE(type);
    BlockWriter writer(type % 2 == 0, 1);
    writer.Entry(type < 8 ? 0x8769 : 0x8825, 4, 1, 26);
    writer.Number(0, 4);
    writer.Number(1, 2);
    writer.Number(0x9999, 2);
    writer.Number(type, 2);
    writer.Longs({9, 44, 0});
    Bytes value(9 * kBytes[type]);
    for (std::size_t i = 0; i < value.size(); ++i) value[i] = static_cast<std::uint8_t>(i + 100);
    writer.block.insert(writer.block.end(), value.begin(), value.end());
    const Bytes exif = Travelled(Format::Tiff, WithExif(writer.block)).exif;
    EXPECT_EQ(exif.size() % 2, 0u);
    EXPECT_EQ(!exif.empty() && Contains(exif, value), !value.empty());
    writer.block.pop_back();
    EXPECT_TRUE(Travelled(Format::Tiff, WithExif(writer.block)).exif.empty());
  }
}

TEST(Metadata, ThatDoesNotFitIsLeftOut) {
  Bytes grey = RealProfile();
  std::copy_n("GRAY", 4, grey.begin() + 16);
  const Metadata wrong[] = {WithProfile(grey), WithProfile(Bytes(50, 1)),
                            WithExif(BytesOf("no EXIF"))};
  for (const Format format : {Format::Jpeg, Format::Png, Format::Tiff}) {
    for (const Metadata& metadata : wrong) EXPECT_TRUE(Travelled(format, metadata).profile.empty());
  }
  for (const std::size_t size : {65527, 65528}) {  // what a marker holds, and a byte more
    EXPECT_EQ(Travelled(Format::Jpeg, WithExif(Bytes(size, 'I'))).exif.empty(), size > 65527);
  }
  EXPECT_TRUE(Travelled(Format::Bmp, {MakeExif(true, 1), LongProfile(), {}, {}, {}}).exif.empty());
}

// Whatever a block says, nothing outside of it is touched; the sanitizers watch.
TEST(Metadata, DamagedBlocksDoNoHarm) {
  const Bytes good = MakeExif(true, 6);
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
      Metadata metadata = WithExif(block);
      metadata.xmp = block;
      imageio::SetPictureSize(metadata, 100000, 1);
      if (change % 10 == 1) {
        Travelled(Format::Tiff, WithExif(block));
        Travelled(Format::Jpeg, WithExif(block));
      }
    }
  }
}

}  // namespace
