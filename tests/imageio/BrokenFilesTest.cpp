#include <gtest/gtest.h>

#include "imageio/Decoder.h"
#include "imageio/Source.h"
#include "tests/imageio/ExifMaker.h"
#include "tests/imageio/TryFile.h"

namespace {

using namespace test;

Bytes GoodFile(Format format) {
  return WrittenWith(format, TestPicture::Random(40, 30, true), WithExif(MakeExif(true, 8)));
}

TEST(BrokenFiles, OfTheCollectionDoNoHarm) {
  int pictures = 0;
  int errors = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(DataFolder())) {
    if (!entry.is_regular_file()) continue;
    SCOPED_TRACE(entry.path().string());
    const Outcome outcome = TryBytes(ReadBytes(entry.path()));
    ++(outcome == Outcome::Picture ? pictures : errors);
    const std::string name = entry.path().filename().string();
    if (name.ends_with(".ref.png")) {
      EXPECT_EQ(outcome, Outcome::Picture);
    }
    const bool ours = imageio::FormatOfName(name) != Format::Unknown;
    const bool harmless = name == "invalid.2.ppm";  // a comment behind the highest value
    if (entry.path().parent_path().filename() == "fail" && ours && !harmless) {
      EXPECT_NE(outcome, Outcome::Picture);
    }
  }
  EXPECT_GT(pictures, 100);
  EXPECT_GT(errors, 100);
}

TEST(BrokenFiles, CutOffAreErrors) {
  for (const Format format : kAll) {
    const Bytes good = GoodFile(format);
    ASSERT_EQ(TryBytes(good), Outcome::Picture) << static_cast<int>(format);
    for (std::size_t part = 0; part < 50; ++part) {
      const Bytes cut(good.begin(),
                      good.begin() + static_cast<std::ptrdiff_t>(good.size() * part / 50));
      std::string message;
      EXPECT_EQ(TryBytes(cut, &message), Outcome::Error)
          << static_cast<int>(format) << " at " << part << " / 50";
      if (part == 49 && format != Format::Tiff) {
        EXPECT_EQ(message, "the file ends in the middle of the picture");
      }
    }
  }
}

TEST(BrokenFiles, WithChangedBitsDoNoHarm) {
  std::mt19937 random(11);
  for (const Format format : kAll) {
    const Bytes good = GoodFile(format);
    for (int change = 0; change < 1500; ++change) {
      Bytes bytes = good;
      const std::size_t range =
          change % 2 == 0 ? bytes.size() : std::min<std::size_t>(200, bytes.size());
      for (int i = 0; i <= change % 4; ++i) {
        const std::size_t at = random() % range;
        bytes[format == Format::Tiff && change % 2 == 1 ? bytes.size() - 1 - at : at] ^=
            static_cast<std::uint8_t>(1u << random() % 8);
      }
      TryBytes(bytes);
    }
  }
}

TEST(BrokenFiles, WrongHeadsAreErrors) {
  std::vector<Bytes> files = {Bytes(1000)};
  for (const char* text :
       {"P6 2147483647 2147483647 255\n", "P4 99999999999 1\n", "P5 5 5 65536\n", "P5 1 1 0\n1",
        "P5 -1 1 255\n1", "P3 1 1 255 1 x 3", "P1 1 1 2",
        "P7\nWIDTH 99999\nHEIGHT 99999\nDEPTH 3\nMAXVAL 255\nENDHDR\n",
        "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 1\nENDHDR\n1",
        "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nTUPLTYPE CMYK\nENDHDR\n1234"}) {
    files.push_back(BytesOf(text));
  }
  // Depths that do not exist, that have no runs or no fields; zeros would be a picture.
  for (const auto& [bits, compression] :
       {std::pair(5, 0), {4, 1}, {24, 1}, {8, 2}, {24, 2}, {8, 3}, {24, 3}, {24, 6}, {24, 4}}) {
    files.emplace_back(2000);
    for (const auto& [at, byte] :
         {std::pair(0, 'B'), {1, 'M'}, {14, 40}, {18, 1}, {22, 1}, {26, 1}})
      files.back()[static_cast<std::size_t>(at)] = static_cast<std::uint8_t>(byte);
    files.back()[28] = static_cast<std::uint8_t>(bits);
    files.back()[30] = static_cast<std::uint8_t>(compression);
  }
  for (const Bytes& file : files) {
    EXPECT_EQ(TryBytes(file), Outcome::Error) << std::string(file.begin(), file.begin() + 9);
  }
}

TEST(BrokenFiles, OfOtherKindsAreToldSo) {
  EXPECT_THROW(ImageReader("no such file"), ImageError);
  EXPECT_THROW(ImageReader(std::filesystem::temp_directory_path()), ImageError);
  const std::filesystem::path unreadable = "/sys/class/net/lo/speed";  // a length without bytes
  if (std::filesystem::exists(unreadable) && std::ifstream(unreadable).get() < 0) {
    EXPECT_THROW(imageio::FileSource{unreadable}, ImageError) << "not of an unknown kind";
  }
  for (const char* text : {"", "P", "P6", "P9 1 1", "GIF89a", "\x89PNG", "text that is none"}) {
    const Bytes bytes = BytesOf(text);
    std::string message;
    EXPECT_EQ(TryBytes(bytes, &message), Outcome::Error);
    EXPECT_EQ(message.rfind("not a picture file of a known kind (JPEG", 0), 0u) << text;
  }
}

// Its first word begins small, unless it is a name.
TEST(BrokenFiles, LibrariesSpeakInOurSentences) {
  const std::pair<const char*, const char*> kMessages[] = {
      {"Bogus marker length.\n", "bogus marker length"},
      {"Zero width", "zero width"},
      {"Any", "any"},
      {"[x] cut", "[x] cut"},
      {"JPEG ends", "JPEG ends"},
      {"I", "I"},
      {".\n", "the picture is damaged"}};
  for (const auto& [given, told] : kMessages) EXPECT_EQ(imageio::LibraryMessage(given), told);
}

TEST(BrokenFiles, AreToldForWhatTheyAre) {
  Bytes png = GoodFile(Format::Png);
  png[29] ^= 1;
  const std::pair<Bytes, const char*> cases[] = {
      {png, "IHDR: CRC error"},
      {BytesOf("P5 0 5 255\n"), "the picture has no size"},
      {BytesOf("P5 5 0 255\n"), "the picture has no size"}};
  for (const auto& [file, told] : cases) {
    std::string message;
    EXPECT_EQ(TryBytes(file, &message), Outcome::Error);
    EXPECT_EQ(message, told);
  }
}

}  // namespace
