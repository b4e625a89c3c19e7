// Formats whose libraries are loaded on demand, and what travels from each format to each other.
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <fstream>
#include <set>
#include <sstream>

#include "imageio/ModuleFormats.h"
#include "tests/imageio/DngMaker.h"
#include "tests/imageio/TryFile.h"

namespace {

using namespace test;

using imageio::Metadata;

struct NamedFormat {
  Format format;
  const char* name;
  const char* module = nullptr;  // null: the library itself knows the format
};
void PrintTo(const NamedFormat& format, std::ostream* stream) {
  *stream << format.name;
}
constexpr NamedFormat kWebp = {Format::WebP, "WebP", "webp"};
constexpr NamedFormat kJxl = {Format::JpegXl, "JpegXl", "jxl"};
constexpr NamedFormat kAvif = {Format::Avif, "Avif", "avif"};
constexpr NamedFormat kHeif = {Format::Heif, "Heif", "heif"};
constexpr NamedFormat kRaw = {Format::Raw, "Raw", "raw"};

bool IsAmong(const NamedFormat& format, const char* words) {
  std::istringstream stream(words);
  const std::set<std::string> modules(std::istream_iterator<std::string>(stream), {});
  return modules.count(format.module) > 0;
}
// Whether this system has the format, and writes it.
bool IsThere(const NamedFormat& format) {
  return !format.module || IsAmong(format, FXBOX_TEST_MODULES);
}
bool IsWritten(const NamedFormat& format) {
  return IsThere(format) && !(format.module && IsAmong(format, FXBOX_TEST_READERS));
}
std::vector<NamedFormat> ThoseThere(std::vector<NamedFormat> formats) {
  std::erase_if(formats, [](const NamedFormat& format) { return !IsThere(format); });
  return formats;
}
std::vector<NamedFormat> WithModules() {
  std::vector<NamedFormat> formats = {kWebp, kJxl, kAvif, kHeif};
  std::erase_if(formats, [](const NamedFormat& format) { return !IsWritten(format); });
  return formats;
}
// A photograph with alpha, for systems that write none.
Bytes HeifSample() {
  return ReadBytes(FXBOX_TEST_SAMPLES "/sample.heic");
}

bool HasCamera(const Bytes& exif) {
  return std::search(exif.begin(), exif.end(), kCamera, kCamera + sizeof kCamera) != exif.end();
}

TEST(ModuleFormats, AreKnownByTheirBytes) {
  for (const auto& [format, name, module] : WithModules()) {
    const Bytes bytes = WrittenAt(format, TestPicture::Smooth(32, 24), 90);
    const imageio::ImageInfo info = InfoOf(bytes);
    EXPECT_EQ(info.format, format) << name;
    EXPECT_EQ(imageio::FormatOfBytes(bytes.data(), 16), format) << name;
    EXPECT_EQ(info.width, 32) << name;
    EXPECT_EQ(info.height, 24) << name;
    EXPECT_FALSE(info.hasMask) << name;
    EXPECT_TRUE(info.notes.empty()) << name;
  }
}

// Nothing but WebP would be left out by a build that lost its modules.
TEST(ModuleFormats, AreAbsentWithAReason) {
  ASSERT_TRUE(IsThere(kWebp));
  const Bytes jxl = {0xFF, 0x0A, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14};
  std::string message;
  EXPECT_EQ(TryBytes(jxl, &message), Outcome::Error);
  const bool isUnknown = message.find("no module for JPEG XL") != message.npos;
  EXPECT_NE(isUnknown, IsThere(kJxl)) << message;
}

TEST(ModuleFormats, KeepEveryByteAtTheHighestQuality) {
  for (const auto& [format, name, module] : ThoseThere({kWebp, kJxl, kAvif})) {
    for (const bool masked : {false, true}) {
      for (const auto& [width, height] : {std::pair(1, 1), std::pair(61, 43), std::pair(16, 300)}) {
        SCOPED_TRACE(testing::Message()
                     << name << (masked ? " masked " : " ") << width << " x " << height);
        const TestPicture picture = TestPicture::Random(width, height, masked);
        const Bytes bytes = WrittenAt(format, picture, 100);
        EXPECT_EQ(InfoOf(bytes).hasMask, masked);
        EXPECT_TRUE(TestPicture::OfBytes(bytes) == picture);
        TestPicture part(width, height);
        ImageReader stopped(bytes.data(), bytes.size());
        EXPECT_FALSE(stopped.Read(part.Rows(), [](double) { return false; }));
      }
    }
  }
}

TEST(ModuleFormats, AreCloseAndQualityCounts) {
  TestPicture picture = TestPicture::Smooth(128, 96);
  for (const bool masked : {false, true}) {
    for (std::size_t i = 0; masked && i < picture.mask.size(); ++i)
      picture.mask[i] = static_cast<BYTE>(i % 256);
    for (const auto& [format, name, module] : WithModules()) {
      const Bytes fine = WrittenAt(format, picture, 95);
      const Bytes coarse = WrittenAt(format, picture, 20);
      const TestPicture read = TestPicture::OfBytes(fine);
      EXPECT_LT(picture.DistanceTo(read), 3) << name;
      EXPECT_LT(picture.DistanceTo(TestPicture::OfBytes(coarse)), 12) << name;
      EXPECT_GT(fine.size(), coarse.size()) << name;
      EXPECT_GT(coarse.size(), WrittenAt(format, picture, 1).size()) << name;
      double off = 0;
      for (std::size_t i = 0; i < read.mask.size(); ++i)
        off += std::abs(read.mask[i] - picture.mask[i]);
      EXPECT_LT(off / static_cast<double>(read.mask.size()), 4) << name;
    }
  }
}

// AVIF files are turned by a property of their own, which is made of the EXIF data's orientation.
TEST(ModuleFormats, PicturesStandUpright) {
  TestPicture picture = TestPicture::Random(7, 5, false);
  for (int orientation = 1; orientation <= 8; ++orientation) {
    const Metadata metadata = WithExif(MakeExif(true, orientation));
    const TestPicture turned = TestPicture::OfBytes(WrittenAt(Format::Png, picture, 100, metadata));
    EXPECT_EQ(turned.mask, Bytes(7 * 5)) << orientation;
    for (const auto& [format, name, module] : ThoseThere({kAvif, kWebp})) {
      EXPECT_TRUE(TestPicture::OfBytes(WrittenAt(format, picture, 100, metadata)) == turned)
          << name << " by " << orientation;
    }
  }
}

TEST(ModuleFormats, CutFilesAreErrors) {
  std::vector<Bytes> files = {MakeDng(1), HeifSample()};
  for (const auto& [format, name, module] : WithModules()) {
    files.push_back(WrittenAt(format, TestPicture::Random(40, 30, true), 90));
  }
  for (const Bytes& bytes : files) {
    for (std::size_t length = 16; length < bytes.size(); length += bytes.size() / 10 + 1) {
      const Bytes cut(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(length));
      EXPECT_THROW(TestPicture::OfBytes(cut), ImageError)
          << "file " << &bytes - files.data() << " cut at " << length;
    }
  }
}

// Red at the left and blue at the right, as the sensor had it, and turned as the camera was.
TEST(ModuleFormats, RawPicturesAreDeveloped) {
  if (!IsThere(kRaw)) GTEST_SKIP() << "this system has no camera raw";
  for (const int orientation : {1, 6}) {
    const Bytes bytes = MakeDng(orientation);
    ImageReader reader(bytes.data(), bytes.size());
    EXPECT_EQ(reader.Info().format, Format::Raw);
    EXPECT_TRUE(HasCamera(reader.Info().metadata.exif));
    EXPECT_EQ(reader.Info().metadata.xmp, BytesOf(kDngPacket));
    EXPECT_EQ(reader.Info().notes.size(), 1u) << "of 16 bits 8 remain";
    const bool isTurned = orientation == 6;
    ASSERT_EQ(reader.Info().width, isTurned ? kDngHeight : kDngWidth);
    ASSERT_EQ(reader.Info().height, isTurned ? kDngWidth : kDngHeight);
    TestPicture picture = TestPicture::Of(reader);
    for (int i = 8; i < 40; ++i) {
      const BYTE* const red = isTurned ? picture.Pixel(i, 10) : picture.Pixel(10, i);
      const BYTE* const blue = isTurned ? picture.Pixel(i, 53) : picture.Pixel(53, i);
      EXPECT_GT(red[2], 2 * red[1]) << orientation << " at " << i;
      EXPECT_GT(red[2], 2 * red[0]) << orientation << " at " << i;
      EXPECT_GT(blue[0], 2 * blue[1]) << orientation << " at " << i;
      EXPECT_GT(blue[0], 2 * blue[2]) << orientation << " at " << i;
    }
  }
  EXPECT_THROW(Written(Format::Raw, TestPicture(4, 4)), ImageError);
  TestPicture greys = TestPicture::OfBytes(MakeDng(1, true));
  for (int i = 8; i < 40; ++i) {
    const BYTE* const pixel = greys.Pixel(i, i);
    EXPECT_EQ(pixel[0], pixel[2]);
    EXPECT_GT(pixel[1], greys.Pixel(i + 8, i)[0]);
    EXPECT_GT(pixel[1], greys.Pixel(i, i + 8)[0]);
  }
}

// --- damage of every kind

class DamagedFiles : public testing::TestWithParam<NamedFormat> {
 protected:
  std::size_t Chance(std::size_t most) { return random() % std::max<std::size_t>(1, most); }

  // Bits here and there, a number that says something else, bytes more or less, a cut.
  Bytes Damaged(const Bytes& good) {
    constexpr std::uint8_t kEnds[][4] = {
        {0, 0, 0, 0}, {255, 255, 255, 255}, {127, 255, 255, 255}, {0, 0, 255, 255}};
    Bytes bytes = good;
    const std::size_t range =
        Chance(2) == 0 ? bytes.size() : std::min<std::size_t>(400, bytes.size());
    const auto at = static_cast<std::ptrdiff_t>(Chance(range - 4));
    const auto count = static_cast<std::ptrdiff_t>(
        std::min(Chance(40) + 1, bytes.size() - static_cast<std::size_t>(at)));
    const auto from = bytes.begin() + at;
    switch (Chance(5)) {
      case 0:
        std::copy_n(kEnds[Chance(std::size(kEnds))], 4, from);
        break;
      case 1:
        bytes.erase(from, from + count);
        break;
      case 2: {
        const Bytes piece(from, from + count);
        bytes.insert(from, piece.begin(), piece.end());
        break;
      }
      case 3:
        bytes.resize(static_cast<std::size_t>(at) + 4);
        break;
      default:
        for (std::size_t i = 0; i <= Chance(4); ++i) {
          bytes[Chance(range)] ^= static_cast<std::uint8_t>(1u << Chance(8));
        }
    }
    return bytes;
  }

  std::vector<Bytes> GoodFiles() const {
    const Format format = GetParam().format;
    if (format == Format::Raw) return {MakeDng(1), MakeDng(8)};
    if (!IsWritten(GetParam())) return {HeifSample()};
    Metadata metadata = WithExif(MakeExif(true, 8));
    metadata.xmp = BytesOf("<x:xmpmeta xmlns:x='adobe:ns:meta/'/>");
    return {WrittenAt(format, TestPicture::Random(40, 30, true), 100, metadata),
            WrittenAt(format, TestPicture::Smooth(40, 30), 80)};
  }

  std::mt19937 random{11};
};

// A picture or an error, soon; nothing else.
TEST_P(DamagedFiles, DoNoHarm) {
  constexpr int kFiles = 2000;
  constexpr double kMostSeconds = 5;  // of the processor, for one of these small files
  const std::vector<Bytes> good = GoodFiles();
  testing::internal::CaptureStderr();
  int pictures = 0;
  int errors = 0;
  for (int i = 0; i < kFiles; ++i) {
    const Bytes bytes = Damaged(good[Chance(good.size())]);
    const std::clock_t start = std::clock();
    const Outcome outcome = TryBytes(bytes);
    EXPECT_LT(static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC, kMostSeconds) << i;
    ++(outcome == Outcome::Picture ? pictures : errors);
  }
  EXPECT_GT(pictures, kFiles / 50);
  EXPECT_GT(errors, kFiles / 50);
  // Those of JPEG XL and AVIF tell of every fault, and know of no way to be still.
  const std::string said = testing::internal::GetCapturedStderr();
  if (GetParam().format == Format::Raw) {
    EXPECT_EQ(said, "");
  }
}

INSTANTIATE_TEST_SUITE_P(Formats, DamagedFiles,
                         testing::ValuesIn(ThoseThere({kWebp, kJxl, kAvif, kHeif, kRaw})),
                         [](const auto& each) { return std::string(each.param.name); });

// --- what travels

Metadata Everything() {
  Metadata metadata = WithExif(MakeExif(true, 1));
  metadata.profile = ImageReader(DataFolder() / "icc-profile.png").Info().metadata.profile;
  metadata.xmp = BytesOf("<x:xmpmeta xmlns:x='adobe:ns:meta/'/>");
  metadata.iptc = BytesOf("\x1C\x02\x05" + std::string("\0\x05Title\x1C\x02\x7A\0\0", 13));
  metadata.iptc.resize(16);
  metadata.resolution = {300, 300};
  return metadata;
}

Metadata Through(Format format, const Metadata& metadata) {
  return InfoOf(WrittenAt(format, TestPicture::Smooth(16, 16), 100, metadata)).metadata;
}

// With the mark of JPEG files ahead of the data, as some programs have it, and with a packet longer
// than the pieces in which it may be read.
TEST(ModuleFormats, KeepMarkedAndLongData) {
  Metadata marked = WithExif(MakeExif(true, 1));
  marked.exif.insert(marked.exif.begin(), {'E', 'x', 'i', 'f', 0, 0});
  for (int i = 0; i < 50000; ++i) marked.xmp.push_back(static_cast<std::uint8_t>('a' + i % 23));
  for (int times = 0; times < 3; ++times)
    marked.xmp.insert(marked.xmp.end(), marked.xmp.begin(), marked.xmp.begin() + 50000);
  for (const auto& [format, name, module] : WithModules()) {
    const Metadata there = Through(format, marked);
    EXPECT_EQ(there.exif, MakeExif(true, 1)) << name;
    EXPECT_EQ(there.xmp, marked.xmp) << name;
  }
}

const char* const kSeveral = "it has several pictures, of which one is taken";

// Two frames of what WebP files hold of one picture, of which the second is another.
TEST(ModuleFormats, AnimationsGiveTheirFirstFrame) {
  constexpr int kWidth = 11, kHeight = 7;
  for (const bool masked : {false, true}) {
    const auto chunk = [](const char* name, const Bytes& data) {
      BlockWriter writer(true, BytesOf(name));
      writer.Number(static_cast<std::uint32_t>(data.size()), 4);
      writer.block.insert(writer.block.end(), data.begin(), data.end());
      writer.block.resize((writer.block.size() + 1) / 2 * 2);
      return writer.block;
    };
    Bytes content = BytesOf("WEBP");
    const auto add = [&content](const Bytes& piece) {
      content.insert(content.end(), piece.begin(), piece.end());
    };
    const Bytes size = {kWidth - 1, 0, 0, kHeight - 1, 0, 0};
    Bytes head = {static_cast<std::uint8_t>(masked ? 0x12 : 2), 0, 0, 0};
    head.insert(head.end(), size.begin(), size.end());
    add(chunk("VP8X", head));
    add(chunk("ANIM", Bytes(6)));
    for (const unsigned seed : {1u, 2u}) {
      const Bytes still =
          WrittenAt(Format::WebP, TestPicture::Random(kWidth, kHeight, masked, seed), 100);
      Bytes frame(6);
      frame.insert(frame.end(), size.begin(), size.end());
      frame.insert(frame.end(), {100, 0, 0, 2});  // instead of what was there
      frame.insert(frame.end(), still.begin() + 12, still.end());
      add(chunk("ANMF", frame));
    }
    const Bytes file = chunk("RIFF", content);
    ImageReader reader(file.data(), file.size());
    EXPECT_EQ(reader.Info().notes, std::vector<std::string>{kSeveral});
    EXPECT_TRUE(TestPicture::Of(reader) == TestPicture::Random(kWidth, kHeight, masked, 1));
  }
}

// Files of 10 bits, with half of alpha in the left half and all of it in the right one. The colours
// of HEIF and AVIF are multiplied by it. AVIF and JPEG XL have a second picture.
TEST(ModuleFormats, DeepPicturesAreRead) {
  for (const auto& [format, name, module] : ThoseThere({kHeif, kAvif, kJxl})) {
    SCOPED_TRACE(name);
    const char* const end = format == Format::Heif ? "heic" : module;
    ImageReader reader(std::filesystem::path(FXBOX_TEST_SAMPLES) / (std::string("deep.") + end));
    std::vector<std::string> notes = {"its samples of 10 bits are taken with 8 bits"};
    if (format != Format::Heif) notes.push_back(kSeveral);
    EXPECT_EQ(reader.Info().notes, notes);
    TestPicture picture = TestPicture::Of(reader);
    for (int i = 0; i < 16; ++i) {
      constexpr int kShown[2][4] = {{50, 100, 199, 127}, {25, 50, 100, 0}};
      for (const int half : {0, 1}) {
        const int x = 16 * half + i;
        for (int c = 0; c < 3; ++c) EXPECT_NEAR(picture.Pixel(x, i)[c], kShown[half][c], 3) << i;
        EXPECT_NEAR(picture.Mask(x, i), kShown[half][3], 2) << i;
      }
    }
    if (format == Format::Heif) {
      EXPECT_EQ(picture.Pixel(0, 15)[2], 255) << "more light than alpha allows";
    }
  }
}

// E, P, X, I and R for what is there behind both.
std::string WhatTravels(Format from, Format to) {
  const Metadata all = Everything();
  const Metadata there = Through(to, Through(from, all));
  std::string letters;
  if (HasCamera(there.exif)) letters += 'E';
  if (there.profile == all.profile) letters += 'P';
  if (there.xmp == all.xmp) letters += 'X';
  if (there.iptc == all.iptc) letters += 'I';
  if (there.resolution.x == 300) letters += 'R';
  return letters.empty() ? "-" : letters;
}

constexpr NamedFormat kInTable[] = {{Format::Jpeg, "JPEG"},
                                    {Format::Png, "PNG"},
                                    {Format::Tiff, "TIFF"},
                                    {Format::WebP, "WebP", "webp"},
                                    {Format::JpegXl, "JPEG XL", "jxl"},
                                    {Format::Avif, "AVIF", "avif"},
                                    {Format::Heif, "HEIF", "heif"},
                                    {Format::Bmp, "BMP"},
                                    {Format::Pnm, "PNM, PAM"}};

// What the document says, for formats that this system lacks.
std::string CellOf(const std::string& table, std::size_t row, std::size_t column) {
  constexpr std::size_t kHeadLines = 2;
  constexpr std::size_t kBarsOfLine = std::size(kInTable) + 2;
  std::istringstream cells(table);
  std::string cell;
  for (std::size_t i = 0; i <= (row + kHeadLines) * kBarsOfLine + column + 2; ++i) {
    std::getline(cells, cell, '|');
  }
  return cell;
}

std::string Table(const std::string& former) {
  std::ostringstream text;
  text << "| from \\ to |";
  for (const auto& to : kInTable) text << " " << to.name << " |";
  text << "\n| --- |";
  for (std::size_t i = 0; i < std::size(kInTable); ++i) text << " --- |";
  for (std::size_t row = 0; row < std::size(kInTable); ++row) {
    const NamedFormat& from = kInTable[row];
    text << "\n| " << from.name << " |";
    for (std::size_t column = 0; column < std::size(kInTable); ++column) {
      const NamedFormat& to = kInTable[column];
      const bool areThere = IsWritten(from) && IsWritten(to);
      text << (areThere ? " " + WhatTravels(from.format, to.format) + " "
                        : CellOf(former, row, column))
           << "|";
    }
  }
  return text.str() + "\n";
}

// FXBOX_WRITE_DOCS=1 in the environment writes the document anew.
TEST(RoundTripTable, IsWhatTheDocumentSays) {
  const std::filesystem::path document = FXBOX_TEST_DOCS "/round-trips.md";
  const std::string begin = "<!-- table -->\n", end = "<!-- end of table -->\n";
  std::string text;
  {
    std::ifstream stream(document, std::ios::binary);
    text.assign(std::istreambuf_iterator<char>(stream), {});
  }
  const std::size_t from = text.find(begin), to = text.find(end);
  ASSERT_NE(from, text.npos);
  ASSERT_NE(to, text.npos);
  const std::string table = Table(text.substr(from + begin.size(), to - from - begin.size()));
  if (std::getenv("FXBOX_WRITE_DOCS")) {
    std::ofstream(document, std::ios::binary)
        << text.substr(0, from + begin.size()) << table << text.substr(to);
    return;
  }
  EXPECT_EQ(text.substr(from + begin.size(), to - from - begin.size()), table);
}

}  // namespace
