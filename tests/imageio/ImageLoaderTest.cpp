// The class through which picture boxes read and write files: kinds, packed bitmaps, what goes in
// and out. And what is written byte for byte, as other readers find it.
#include "imageio/ImageLoader.h"

#include <gtest/gtest.h>

#include <string_view>

#include "imageio/StoredBitmap.h"
#include "tests/imageio/ExifMaker.h"
#include "tests/imageio/TestPicture.h"

namespace {

using namespace test;

using namespace std::string_view_literals;
using imageio::ImageLoader;

Bytes Noise(int width, int height, bool isMask) {
  Bytes bitmap =
      isMask ? imageio::BlankMaskBitmap(width, height) : imageio::BlankColourBitmap(width, height);
  std::minstd_rand random(1);
  for (BYTE* row : imageio::RowsOf(bitmap)) {
    for (int x = 0; x < (isMask ? 1 : 3) * width; ++x) row[x] = static_cast<BYTE>(random() >> 9);
  }
  return bitmap;
}

const Bytes kPicture = Noise(7, 4, false), kMask = Noise(7, 4, true);

TEST(ImageLoader, TellsKindsByBytesAndNames) {
  const struct {
    std::size_t at;
    std::string_view mark;
    int type;
  } kinds[] = {{0, "\xFF\xD8\xFF"sv, 1},
               {0, "II*\0"sv, 2},
               {0, "MM\0*"sv, 2},
               {0, "8BPS"sv, 4},
               {0, "BM"sv, 7},
               {0, "GIF87a"sv, 9},
               {0, "GIF89a"sv, 9},
               {0, "\x89PNG\r\n\x1A\n"sv, 10},
               {0, "P6\n"sv, 15},
               {0, "P7\n"sv, 15},
               {0, "\xFF\x4F\xFF\x51"sv, 13},
               {0, "\0\0\0\x0CjP  \r\n"sv, 13},
               {0, "\x59\xA6\x6A\x95"sv, 14},
               {0x800, "PCD_IPI"sv, 16},
               {0, "FOVb"sv, 17},
               {0, "FUJIFILMCCD-RAW"sv, 17},
               {0, "\0MRM"sv, 17},
               {0, "IIRO"sv, 17},
               {6, "HEAPCCDR"sv, 17}};
  for (const auto& kind : kinds) {
    Bytes bytes(0x900, 'x'), moved = bytes;
    std::copy(kind.mark.begin(), kind.mark.end(), bytes.begin() + static_cast<long>(kind.at));
    std::copy(kind.mark.begin(), kind.mark.end(), moved.begin() + static_cast<long>(kind.at) + 1);
    EXPECT_EQ(ImageLoader::GetType(bytes), kind.type) << kind.mark;
    EXPECT_EQ(ImageLoader::GetType(moved), 0) << kind.mark;
    bytes.resize(kind.at + kind.mark.size() - 1);
    EXPECT_EQ(ImageLoader::GetType(bytes), 0) << kind.mark;
  }
  for (const char* name : {"a.jpg", "a.JPEG", "b.c.Tif", ".png", "a.nef", "a.DNG", "x.znx"}) {
    EXPECT_TRUE(ImageLoader::IsImage(name)) << name;
  }
  for (const char* name : {"", "jpg", "a.jpg.txt", "a.jp", "a.jpgg", "a.", "a.inf"}) {
    EXPECT_FALSE(ImageLoader::IsImage(name)) << name;
  }
  EXPECT_FALSE(ImageLoader::IsImage(nullptr));
}

TEST(ImageLoader, SavesWhatItLoads) {
  for (int type = 0; type <= 18; ++type) {
    SCOPED_TRACE(type);
    const bool isWritten = type == 1 || type == 2 || type == 7 || type == 10 || type == 15;
    for (const Bytes& mask : {Bytes(), kMask}) {
      ImageLoader saver;
      saver.SetImage(kPicture);
      saver.SetMask(mask);
      const Bytes file = saver.Save(type);
      EXPECT_EQ(saver.Error(), isWritten ? "" : "no encoder");
      ASSERT_EQ(!file.empty(), isWritten);
      if (!isWritten) continue;
      EXPECT_EQ(ImageLoader::GetType(file), type);
      ImageLoader loader(file);
      EXPECT_FALSE(loader.HadError());
      EXPECT_EQ(loader.Type(), type);
      for (const auto& [width, height] : {std::pair(3, 2), {3, 0}, {0, 2}}) {
        ImageLoader preferring(file);
        preferring.PreferedLoadingSize(width, height);
        const bool isReduced = width > 0 && height > 0;  // to what is not smaller
        EXPECT_EQ(preferring.ImageDIB().size(),
                  Noise(isReduced ? 4 : 7, isReduced ? 2 : 4, false).size());
      }
      if (type == 1) continue;  // loses bytes, and the mask
      EXPECT_EQ(loader.MaskDIB(), mask);
      if (mask.empty()) {
        EXPECT_EQ(loader.ImageDIB(), kPicture);
      }
    }
  }
}

TEST(ImageLoader, TellsWhatCannotBeSavedOrLoaded) {
  const Bytes other = Noise(7, 5, true), wide = Noise(8, 4, true),
              cut(kPicture.begin(), kPicture.end() - 1);
  const struct {
    const Bytes &picture, &mask;
    const char* error;
  } cases[] = {{kPicture, other, "the mask does not fit the picture"},
               {kPicture, wide, "the mask does not fit the picture"},
               {kPicture, kPicture, "the mask does not fit the picture"},
               {cut, kMask, "the picture is damaged"}};
  for (const auto& c : cases) {
    ImageLoader saver;
    saver.SetImage(c.picture);
    saver.SetMask(c.mask);
    EXPECT_TRUE(saver.Save(imageio::kTypePng).empty());
    EXPECT_EQ(saver.Error(), c.error);
    saver.SetImage(kPicture);
    saver.SetMask(kMask);
    Bytes file = saver.Save(imageio::kTypePpm);
    EXPECT_FALSE(file.empty()) << "the next one is another";
    EXPECT_EQ(saver.Error(), "");
    file.pop_back();
    ImageLoader loader(file);
    EXPECT_TRUE(loader.HadError());
    EXPECT_TRUE(loader.ImageDIB().empty() && loader.MaskDIB().empty()) << "not half a picture";
  }
  for (const int bits : {1, 4, 8, 24, 32}) {  // where the head tells no number
    Bytes bitmap = imageio::BlankColourBitmap(40, 60);
    bitmap[14] = static_cast<std::uint8_t>(bits);
    const auto head = imageio::StoredBitmap::ParseHead(bitmap);
    EXPECT_EQ(head->Colours(), bits > 8 ? 0u : 1u << bits);
    EXPECT_EQ(head->Bytes(),
              40u + 4 * head->Colours() + 60u * (static_cast<unsigned>(40 * bits + 31) / 32 * 4));
    std::fill_n(bitmap.begin() + 20, 4, std::uint8_t{0});  // nor how long the rows are
    EXPECT_EQ(imageio::ClaimedBitmapBytes(bitmap), head->Bytes());
    bitmap[4] = bitmap[8] = 1;
    EXPECT_EQ(imageio::ClaimedBitmapBytes(bitmap), 40u + 4 * head->Colours() + 4);
  }
  for (const auto& [head, error] : {std::pair("GIF89a", "no decoder"),
                                    {"P6\n30000 30000\n255\n", "the picture is too large"},
                                    {"P6\n30000 1\n255\n", ""},
                                    {"P6\n1 30000\n255\n", ""}}) {
    Bytes file = BytesOf(head);
    file.resize(100000);
    ImageLoader loader(file);
    EXPECT_EQ(loader.HadError(), *error != 0) << head;
    EXPECT_EQ(loader.Error(), error);
    EXPECT_EQ(loader.ImageDIB().empty(), loader.HadError()) << head;
  }
}

TEST(ImageLoader, CarriesDataAndQuality) {
  Bytes exif = MakeExif(true, 1), iptc = {0x1C, 2, 120, 0, 3, 'a', 'b', 'c'};
  Bytes marked = exif;
  marked.insert(marked.begin(), {'E', 'x', 'i', 'f', 0, 0});
  std::size_t length = 0;
  for (const Bytes& given : {exif, marked}) {
    ImageLoader saver;
    saver.SetImage(kPicture);
    saver.PutExifData(given);
    saver.PutIPTCData(iptc);
    saver.SetJpegQuality(length == 0 ? 10 : 100);
    const Bytes file = saver.Save(imageio::kTypeJpeg);
    EXPECT_GT(file.size(), length);
    length = file.size();
    ImageLoader loader(file);
    EXPECT_FALSE(loader.HadError());
    EXPECT_EQ(loader.FileMetadata().exif, exif);
    EXPECT_EQ(loader.FileMetadata().iptc, iptc);
    // A resource without a name, behind a mark that other readers look for.
    const std::string text(file.begin(), file.end());
    EXPECT_NE(text.find("Photoshop 3.0\0"
                        "8BIM\x04\x04\0\0\0\0\0\x08\x1C"sv),
              text.npos);
  }
}

// --- byte for byte

TEST(Files, AreWrittenToTheByte) {
  TestPicture picture(2, 1, 0);
  for (int i = 0; i < 6; ++i)
    picture.colour[static_cast<std::size_t>(i)] = static_cast<BYTE>(i + 1);
  BlockWriter plain(true, {'B', 'M'}), alpha = plain;
  plain.Longs({62, 0, 54, 40, 2, 1, 1 | 24 << 16, 0, 8, 3780, 3780, 0, 0, 0x04030201, 0x0605});
  EXPECT_EQ(Written(Format::Bmp, picture), plain.block);
  const auto text = [&](Format format) {
    const Bytes bytes = Written(format, picture);
    return std::string(bytes.begin(), bytes.end());
  };
  EXPECT_EQ(text(Format::Pnm), "P6\n2 1\n255\n\3\2\1\6\5\4");
  picture.mask[1] = 255 - 9;
  alpha.Longs({130, 0, 122, 108, 2, 1, 1 | 32 << 16, 3, 8, 3780, 3780, 0, 0, 0xFF0000, 0xFF00, 0xFF,
               0xFF000000, 0x73524742});
  alpha.block.resize(122);
  alpha.Longs({0xFF030201, 0x09060504});
  EXPECT_EQ(Written(Format::Bmp, picture), alpha.block);
  EXPECT_EQ(text(Format::Pam),
            "P7\nWIDTH 2\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n"
            "\3\2\1\xFF\6\5\4\t");
}

}  // namespace
