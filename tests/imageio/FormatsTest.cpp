// The kinds of pictures that the formats know beside those that the library itself writes.
#include <gtest/gtest.h>
#include <png.h>
#include <tiffio.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <map>

#include "tests/imageio/ExifMaker.h"
#include "tests/imageio/JpegMaker.h"

namespace {

using namespace test;

// Red, green, blue and alpha of all pixels from the top left on.
Bytes PixelsOf(TestPicture picture) {
  Bytes pixels;
  for (int y = 0; y < picture.height; ++y) {
    for (int x = 0; x < picture.width; ++x) {
      const BYTE* pixel = picture.Pixel(x, y);
      pixels.insert(pixels.end(), {pixel[2], pixel[1], pixel[0],
                                   static_cast<std::uint8_t>(255 - picture.Mask(x, y))});
    }
  }
  return pixels;
}

Bytes Pixels(const Bytes& file) {
  return PixelsOf(TestPicture::OfBytes(file));
}

Bytes Greys(std::initializer_list<std::uint8_t> greys) {
  Bytes pixels;
  for (const std::uint8_t grey : greys) pixels.insert(pixels.end(), {grey, grey, grey, 255});
  return pixels;
}

TEST(Pnm, AllKinds) {
  using namespace std::string_literals;
  const std::pair<std::string, Bytes> cases[] = {
      {"P1\n# a comment\n3 2\n1 0 1\n010", Greys({0, 255, 0, 255, 0, 255})},
      {"P4 10 1\n\xA0\x40", Greys({0, 255, 0, 255, 255, 255, 255, 255, 255, 0})},
      {"P2\t2 2 # width\n100\n0 50\r\n100 101", Greys({0, 128, 255, 255})},
      {"P5 3#\n1#5\n255# then pixels\nabc", Greys({'a', 'b', 'c'})},
      {"P5 4 1 15\n\x00\x01\x07\x0F"s, Greys({0, 17, 119, 255})},
      {"P5 4 1 65535\n\x00\x80\x00\x81\x7F\xFF\xFF\xFF"s, Greys({0, 1, 127, 255})},
      {"P3 1 1 7 1 2 3", {36, 73, 109, 255}},
      {"P6 1 1 65535\n\xFF\xFF\x80\x80\x00\x00"s, {255, 128, 0, 255}},
      {"P7\nWIDTH 1\nHEIGHT 1\nDEPTH 4\nMAXVAL 65535\nTUPLTYPE RGB_ALPHA\nENDHDR\n\x01\x01\x02\x02\x03\x03\x00\x00"s,
       {1, 2, 3, 0}},
  };
  for (const auto& [text, pixels] : cases) EXPECT_EQ(Pixels(BytesOf(text)), pixels) << text;
  const std::map<std::string, std::size_t> tuples = {{"BLACKANDWHITE", 1},
                                                     {"GRAYSCALE", 1},
                                                     {"BLACKANDWHITE_ALPHA", 2},
                                                     {"GRAYSCALE_ALPHA", 2},
                                                     {"RGB", 3},
                                                     {"RGB_ALPHA", 4},
                                                     {"", 1}};
  for (const auto& [name, samples] : tuples) {
    for (std::size_t depth = 0; depth < 6; ++depth) {
      const Bytes file =
          BytesOf("P7\n# text\nHEIGHT 1\nWIDTH 1\n\nMAXVAL 255\nDEPTH " + std::to_string(depth) +
                  "\nTUPLTYPE " + name + "\nENDHDR\n\1\2\3\4\5");
      Bytes pixel = depth < 3 ? Greys({1}) : Bytes{1, 2, 3, 255};
      if (depth % 2 == 0) pixel[3] = static_cast<std::uint8_t>(depth);
      if (depth == samples || (name.empty() && depth > 0 && depth < 5)) {
        EXPECT_EQ(Pixels(file), pixel) << name << depth;
      } else {
        EXPECT_THROW(Pixels(file), ImageError) << name << depth;
      }
    }
  }
}

struct PngKind {
  int type;
  int bits;
  bool transparentColour;
};

// Writes samples as they are packed in the file.
Bytes MakePng(const PngKind& kind, int width, int height, bool interlaced, const Bytes& packed) {
  Bytes bytes;
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  png_set_write_fn(
      png, &bytes,
      [](png_structp file, png_bytep from, std::size_t count) {
        auto* to = static_cast<Bytes*>(png_get_io_ptr(file));
        to->insert(to->end(), from, from + count);
      },
      nullptr);
  png_set_IHDR(png, info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height),
               kind.bits, kind.type, interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, 0, 0);
  png_set_gAMA(png, info, 1.0);  // must not change anything
  if (kind.type == PNG_COLOR_TYPE_PALETTE) {
    const png_color palette[] = {{10, 20, 30}, {40, 50, 60}, {70, 80, 90}, {1, 2, 3}};
    png_set_PLTE(png, info, palette, 1 << kind.bits);
    const png_byte alphas[] = {255, 100};
    if (kind.transparentColour) png_set_tRNS(png, info, alphas, 2, nullptr);
  } else if (kind.transparentColour) {
    const png_color_16 colour = {0, 1, 2, 3, 1};
    png_set_tRNS(png, info, nullptr, 0, &colour);
  }
  png_write_info(png, info);
  const std::size_t rowBytes = png_get_rowbytes(png, info);
  std::vector<png_bytep> rows;
  for (int y = 0; y < height; ++y) {
    rows.push_back(const_cast<png_bytep>(&packed[static_cast<std::size_t>(y) * rowBytes]));
  }
  png_write_image(png, rows.data());
  png_write_end(png, info);
  png_destroy_write_struct(&png, &info);
  return bytes;
}

TEST(Png, AllKinds) {
  struct Case {
    PngKind kind;
    int width;
    Bytes packed;
    Bytes pixels;
  };
  const Case cases[] = {
      {{PNG_COLOR_TYPE_GRAY, 1, false}, 3, {0xA0}, Greys({255, 0, 255})},
      {{PNG_COLOR_TYPE_GRAY, 2, true}, 2, {0x10}, {0, 0, 0, 255, 85, 85, 85, 0}},
      {{PNG_COLOR_TYPE_GRAY, 4, false}, 2, {0x1F}, Greys({17, 255})},
      {{PNG_COLOR_TYPE_GRAY, 16, false}, 2, {0x00, 0x81, 0x81, 0x00}, Greys({1, 128})},
      {{PNG_COLOR_TYPE_GRAY_ALPHA, 8, false}, 1, {7, 0}, {7, 7, 7, 0}},
      {{PNG_COLOR_TYPE_PALETTE, 2, false}, 2, {0x40}, {40, 50, 60, 255, 10, 20, 30, 255}},
      {{PNG_COLOR_TYPE_PALETTE, 2, true}, 2, {0x60}, {40, 50, 60, 100, 70, 80, 90, 255}},
      {{PNG_COLOR_TYPE_RGB, 8, true}, 2, {1, 2, 3, 3, 2, 1}, {1, 2, 3, 0, 3, 2, 1, 255}},
      {{PNG_COLOR_TYPE_RGB, 16, false}, 1, {9, 9, 8, 8, 7, 7}, {9, 8, 7, 255}},
      {{PNG_COLOR_TYPE_RGB_ALPHA, 16, false}, 1, {1, 1, 2, 2, 3, 3, 4, 4}, {1, 2, 3, 4}},
  };
  for (const Case& c : cases) {
    for (const bool interlaced : {false, true}) {
      const Bytes file = MakePng(c.kind, c.width, 1, interlaced, c.packed);
      EXPECT_EQ(Pixels(file), c.pixels) << c.kind.type << ", " << c.kind.bits << " bits";
    }
  }
}

TEST(Png, InterlacedGivesTheSame) {
  const std::pair<int, int> sizes[] = {{1, 1}, {2, 3}, {4, 5}, {5, 4}, {8, 8}, {9, 17}, {33, 31}};
  for (const auto& [width, height] : sizes) {
    for (const int type : {PNG_COLOR_TYPE_RGB, PNG_COLOR_TYPE_RGB_ALPHA}) {
      SCOPED_TRACE(testing::Message() << width << " x " << height << ", type " << type);
      Bytes packed(static_cast<std::size_t>(width * height * 4));
      std::mt19937 random(3);
      for (std::uint8_t& byte : packed) byte = static_cast<std::uint8_t>(random());
      const Bytes plain = MakePng({type, 8, false}, width, height, false, packed);
      const Bytes interlaced = MakePng({type, 8, false}, width, height, true, packed);
      EXPECT_EQ(Pixels(plain), Pixels(interlaced));
      const int half = (height + 1) / 2;
      EXPECT_TRUE(TestPicture::Fitted(plain, width, half) ==
                  TestPicture::Fitted(interlaced, width, half));
    }
  }
}

const JpegKind kProgressive = {JCS_RGB, 3, 95, true};

Bytes WavyPixels(int width, int height, int samples) {
  Bytes data;
  for (int i = 0; i < width * height * samples; ++i) {
    data.push_back(
        static_cast<std::uint8_t>(i / samples % width * 3 + i / width + i % samples * 50));
  }
  return data;
}

TEST(Jpeg, ProgressiveGivesTheSame) {
  const Bytes data = WavyPixels(70, 50, 3);
  const Bytes plain = MakeJpeg(70, 50, {JCS_RGB, 3}, data);
  const Bytes progressive = MakeJpeg(70, 50, kProgressive, data);
  for (const int box : {70, 35, 20, 5}) {
    EXPECT_TRUE(TestPicture::Fitted(plain, box, box) == TestPicture::Fitted(progressive, box, box))
        << box;
  }
}

// However long what other programs keep in a file is.
TEST(Jpeg, OtherMarkersAreSkipped) {
  const Bytes plain = MakeJpeg(70, 50, {JCS_RGB, 3}, WavyPixels(70, 50, 3));
  for (const int length : {2, 3, 1000, 65535}) {
    Bytes marker = {0xFF, 0xE5, static_cast<std::uint8_t>(length >> 8),
                    static_cast<std::uint8_t>(length)};
    marker.resize(static_cast<std::size_t>(length) + 2, 0xFF);
    Bytes longer = plain;
    longer.insert(longer.begin() + 2, marker.begin(), marker.end());
    EXPECT_EQ(Pixels(longer), Pixels(plain)) << length;
  }
}

// A file may lack its end mark, but nothing else; an end mark behind less does not make it whole.
TEST(Jpeg, CutOffAnywhereIsAnError) {
  for (const bool progressive : {false, true}) {
    const Bytes whole = MakeJpeg(70, 50, {JCS_RGB, 3, 95, progressive}, WavyPixels(70, 50, 3));
    EXPECT_EQ(Pixels({whole.begin(), whole.end() - 2}), Pixels(whole));
    for (auto end = whole.begin() + 3; end < whole.end() - 6; ++end) {
      Bytes cut(whole.begin(), end);
      EXPECT_THROW(Pixels(cut), ImageError) << end - whole.begin();
      cut.insert(cut.end(), {0xFF, JPEG_EOI});
      EXPECT_THROW(Pixels(cut), ImageError) << end - whole.begin() << " with an end mark";
    }
  }
}

// Each costs a pass over the picture.
TEST(Jpeg, ScansCountAsWork) {
  const Bytes bytes = MakeJpeg(70, 50, kProgressive, WavyPixels(70, 50, 3));
  ImageReader reader(bytes.data(), bytes.size());
  TestPicture::Of(reader);
  reader.LimitWork({70.0 * 50 * 5, " (told)"});
  try {
    TestPicture::Of(reader);
    FAIL();
  } catch (const ImageError& error) {
    EXPECT_STREQ(error.what(), "decoding it takes more work than the limit: 6 passes (told)");
  }
}

TEST(Jpeg, GreysAndInks) {
  const Bytes grey = Pixels(MakeJpeg(16, 8, {JCS_GRAYSCALE, 1}, Bytes(128, 77)));
  for (std::size_t i = 0; i < grey.size(); ++i) ASSERT_EQ(grey[i], i % 4 == 3 ? 255 : 77);
  Bytes inks;  // as light that they let through: the library marks such files as inverted
  for (int i = 0; i < 128; ++i) inks.insert(inks.end(), {200, 100, 0, 128});
  Bytes file = MakeJpeg(16, 8, {JCS_CMYK, 4}, inks);
  const int light[] = {200 * 128 / 255, 100 * 128 / 255, 0, 255};
  const int ink[] = {55 * 127 / 255, 155 * 127 / 255, 127, 255};
  for (const int* expected : {light, ink}) {
    const Bytes pixels = Pixels(file);
    for (std::size_t i = 0; i < pixels.size(); ++i) ASSERT_NEAR(pixels[i], expected[i % 4], 2);
    // Without the library's mark they are taken as inks.
    const Bytes mark = {0xFF, 0xEE, 0, 14};
    const auto at = std::search(file.begin(), file.end(), mark.begin(), mark.end());
    if (at != file.end()) file.erase(at, at + 16);
  }
}

struct TiffKind {
  int photometric;
  int bits;
  int samples;
  int extra;  // -1 none
  int compression = COMPRESSION_NONE;
  int format = SAMPLEFORMAT_UINT;
};

constexpr int kTiffWidth = 37;
constexpr int kTiffHeight = 35;

// Values as the file holds them, pixel by pixel.
using Samples = std::vector<unsigned>;

void SetTiffFields(TIFF* tiff, const TiffKind& kind, bool planes) {
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, kTiffWidth);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, kTiffHeight);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, kind.bits);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, kind.samples);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, kind.photometric);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, kind.compression);
  TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, kind.format);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, planes ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG);
  const auto extra = static_cast<std::uint16_t>(kind.extra);
  if (kind.extra >= 0) TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &extra);
  std::vector<std::uint16_t> rising(256), falling(256);
  const std::size_t scale = kind.bits == 4 ? 1 : 257;  // some programs store bytes
  for (std::size_t i = 0; i < 256; ++i) {
    rising[i] = static_cast<std::uint16_t>(i * scale);
    falling[i] = static_cast<std::uint16_t>((255 - i) * scale);
  }
  if (kind.photometric == PHOTOMETRIC_PALETTE) {
    TIFFSetField(tiff, TIFFTAG_COLORMAP, rising.data(), falling.data(), rising.data());
  }
}

// Rows of the samples from `plane` on, `perPixel` of each pixel, in a block that starts at x0, y0.
Bytes PackBlock(const TiffKind& kind, const Samples& samples, int plane, int perPixel, int x0,
                int y0, int width, int height) {
  const auto rowBytes = static_cast<std::size_t>((width * perPixel * kind.bits + 7) / 8);
  Bytes block(rowBytes * static_cast<std::size_t>(height));
  for (int y = y0; y < std::min(y0 + height, kTiffHeight); ++y) {
    for (int i = 0; i < std::min(width, kTiffWidth - x0) * perPixel; ++i) {
      const int pixel = y * kTiffWidth + x0 + i / perPixel;
      const unsigned value =
          samples[static_cast<std::size_t>(pixel * kind.samples + plane + i % perPixel)];
      std::uint8_t* row = &block[rowBytes * static_cast<std::size_t>(y - y0)];
      const auto word = static_cast<std::uint16_t>(value);
      if (kind.bits == 16) {
        std::memcpy(row + 2 * i, &word, 2);
      } else if (kind.bits == 32) {
        std::memcpy(row + 4 * i, &value, 4);
      } else if (kind.bits == 64) {
        const double number = std::bit_cast<float>(value);
        std::memcpy(row + 8 * i, &number, 8);
      } else {
        for (int bit = 0; bit < kind.bits; ++bit) {
          const int at = i * kind.bits + bit;
          const unsigned taken = value >> (kind.bits - 1 - bit) & 1;
          row[at / 8] |= static_cast<std::uint8_t>(taken << (7 - at % 8));
        }
      }
    }
  }
  return block;
}

Bytes MakeTiff(const TiffKind& kind, bool tiles, bool planes, const char* mode,
               const Samples& samples) {
  const TemporaryFile file;
  TIFF* tiff = TIFFOpen(file.path.string().c_str(), mode);
  SetTiffFields(tiff, kind, planes);
  const int width = tiles ? 32 : kTiffWidth;  // libtiff's conversion refuses smaller plain tiles
  const int height = tiles ? 32 : 8;
  TIFFSetField(tiff, tiles ? TIFFTAG_TILELENGTH : TIFFTAG_ROWSPERSTRIP, height);
  if (tiles) TIFFSetField(tiff, TIFFTAG_TILEWIDTH, width);
  const auto write = tiles ? TIFFWriteEncodedTile : TIFFWriteEncodedStrip;
  std::uint32_t index = 0;
  for (int plane = 0; plane < (planes ? kind.samples : 1); ++plane) {
    for (int y = 0; y < kTiffHeight; y += height) {
      const int rows = tiles ? height : std::min(height, kTiffHeight - y);
      for (int x = 0; x < kTiffWidth; x += width) {
        Bytes block = PackBlock(kind, samples, plane, planes ? 1 : kind.samples, x, y, width, rows);
        const auto size = static_cast<tmsize_t>(block.size());
        EXPECT_EQ(write(tiff, index++, block.data(), size), size);
      }
    }
  }
  TIFFClose(tiff);
  return ReadBytes(file.path);
}

// The first pixel has given samples, the others random ones, which have to look the same in every
// layout of the file.
TEST(Tiff, AllKinds) {
  struct Case {
    TiffKind kind;
    Samples samples;
    Bytes pixel;
  };
  const Case cases[] = {
      {{PHOTOMETRIC_MINISBLACK, 1, 1, -1}, {1}, {255, 255, 255, 255}},
      {{PHOTOMETRIC_MINISWHITE, 1, 1, -1, COMPRESSION_CCITTFAX4}, {1}, {0, 0, 0, 255}},
      {{PHOTOMETRIC_MINISBLACK, 2, 1, -1}, {2}, {170, 170, 170, 255}},
      {{PHOTOMETRIC_MINISBLACK, 4, 1, -1, COMPRESSION_PACKBITS}, {3}, {51, 51, 51, 255}},
      {{PHOTOMETRIC_MINISBLACK, 16, 1, -1, COMPRESSION_LZW}, {0x8100}, {128, 128, 128, 255}},
      {{PHOTOMETRIC_MINISBLACK, 8, 2, EXTRASAMPLE_UNASSALPHA}, {7, 9}, {7, 7, 7, 9}},
      {{PHOTOMETRIC_MINISWHITE, 8, 1, -1}, {7}, {248, 248, 248, 255}},
      {{PHOTOMETRIC_PALETTE, 8, 1, -1}, {7}, {7, 248, 7, 255}},
      {{PHOTOMETRIC_PALETTE, 4, 1, -1}, {3}, {3, 252, 3, 255}},
      {{PHOTOMETRIC_RGB, 8, 3, -1}, {1, 2, 3}, {1, 2, 3, 255}},
      {{PHOTOMETRIC_RGB, 16, 3, -1, COMPRESSION_ADOBE_DEFLATE},
       {0x101, 0x8100, 0},
       {1, 128, 0, 255}},
      {{PHOTOMETRIC_RGB, 8, 4, EXTRASAMPLE_UNASSALPHA, COMPRESSION_LZW},
       {1, 2, 3, 4},
       {1, 2, 3, 4}},
      {{PHOTOMETRIC_RGB, 8, 4, EXTRASAMPLE_ASSOCALPHA}, {10, 100, 51, 100}, {26, 255, 130, 100}},
      {{PHOTOMETRIC_RGB, 8, 4, EXTRASAMPLE_UNSPECIFIED}, {1, 2, 3, 4}, {1, 2, 3, 255}},
      {{PHOTOMETRIC_MINISBLACK, 8, 2, EXTRASAMPLE_UNASSALPHA, COMPRESSION_NONE, SAMPLEFORMAT_VOID},
       {7, 9},
       {7, 7, 7, 9}},
      // Which the library converts.
      {{PHOTOMETRIC_RGB, 8, 4, EXTRASAMPLE_ASSOCALPHA, COMPRESSION_NONE, SAMPLEFORMAT_INT},
       {10, 100, 51, 100},
       {26, 255, 130, 100}},
      {{PHOTOMETRIC_RGB, 16, 4, EXTRASAMPLE_UNASSALPHA}, {0x101, 0, 0, 0x202}, {1, 0, 0, 2}},
      {{PHOTOMETRIC_SEPARATED, 8, 4, -1}, {255, 0, 155, 155}, {0, 100, 39, 255}},
      {{PHOTOMETRIC_SEPARATED, 8, 5, EXTRASAMPLE_UNASSALPHA},
       {0, 0, 155, 0, 9},
       {255, 255, 100, 9}},
      {{PHOTOMETRIC_RGB, 12, 3, -1}, {0, 0x801, 0xFFF}, {0, 128, 255, 255}},
      {{PHOTOMETRIC_MINISBLACK, 10, 1, -1}, {512}, {128, 128, 128, 255}},
      {{PHOTOMETRIC_RGB, 4, 3, -1}, {1, 2, 15}, {17, 34, 255, 255}},
      {{PHOTOMETRIC_MINISBLACK, 32, 1, -1}, {0x80000000}, {128, 128, 128, 255}},
      // 0.25, -1, 2 and 0.5 as alpha; 0.75, -0.5, infinity and, as alpha, no number.
      {{PHOTOMETRIC_RGB, 32, 4, EXTRASAMPLE_UNASSALPHA, COMPRESSION_LZW, SAMPLEFORMAT_IEEEFP},
       {0x3E800000, 0xBF800000, 0x40000000, 0x3F000000},
       {64, 0, 255, 128}},
      {{PHOTOMETRIC_RGB, 64, 3, -1, COMPRESSION_NONE, SAMPLEFORMAT_IEEEFP},
       {0x3E800000, 0xBF800000, 0x40000000},
       {64, 0, 255, 255}},
      {{PHOTOMETRIC_RGB, 16, 4, EXTRASAMPLE_UNASSALPHA, COMPRESSION_NONE, SAMPLEFORMAT_IEEEFP},
       {0x3A00, 0xB800, 0x7C00, 0x7E00},
       {191, 0, 255, 0}},
  };
  for (const auto& [kind, first, pixel] : cases) {
    std::mt19937 random(7);
    Samples samples(static_cast<std::size_t>(kTiffWidth * kTiffHeight * kind.samples));
    for (unsigned& sample : samples)
      sample = static_cast<unsigned>(random()) >> std::max(0, 32 - kind.bits);
    std::copy(first.begin(), first.end(), samples.begin());
    SCOPED_TRACE(testing::Message() << "photometric " << kind.photometric << ", " << kind.samples
                                    << " x " << kind.bits << " bits, extra " << kind.extra);
    const Bytes expected = Pixels(MakeTiff(kind, false, false, "wl", samples));
    EXPECT_EQ(Bytes(expected.begin(), expected.begin() + 4), pixel);
    for (const bool tiles : {false, true}) {
      for (const bool planes : {false, true}) {
        for (const char* mode : {"wl", "wb", "w8"}) {
          EXPECT_EQ(Pixels(MakeTiff(kind, tiles, planes, mode, samples)), expected)
              << (tiles ? "tiles " : "strips ") << (planes ? "of planes " : "") << mode;
        }
      }
    }
  }
}

// What the rows lack of the file is said.
TEST(Notes, TellOfPagesAndBits) {
  const auto notesOf = [](const Bytes& bytes) { return InfoOf(bytes).notes; };
  using Notes = std::vector<std::string>;
  const char* const bits = "its samples of 16 bits are taken with 8 bits";
  for (const char* mode : {"w", "w8"}) {
    const TemporaryFile file;
    TIFF* tiff = TIFFOpen(file.path.string().c_str(), mode);
    for (const int type : {0, 0, FILETYPE_REDUCEDIMAGE}) {
      SetTiffFields(tiff, {PHOTOMETRIC_MINISBLACK, 16, 1, -1}, false);
      TIFFSetField(tiff, TIFFTAG_SUBFILETYPE, type);
      TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 1);
      Bytes row(2 * kTiffWidth);
      for (std::uint32_t y = 0; y < kTiffHeight; ++y) TIFFWriteScanline(tiff, row.data(), y, 0);
      TIFFWriteDirectory(tiff);
    }
    TIFFClose(tiff);
    const std::string pages = mode == std::string("w") ? "2" : "several";
    EXPECT_EQ(notesOf(ReadBytes(file.path)),
              (Notes{bits, "it has " + pages + " pages, of which the first is taken"}));
  }
  const TiffKind floating = {PHOTOMETRIC_MINISBLACK, 32, 1, -1, COMPRESSION_NONE,
                             SAMPLEFORMAT_IEEEFP};
  EXPECT_EQ(notesOf(MakeTiff(floating, false, false, "w8", Samples(kTiffWidth * kTiffHeight))),
            Notes{"its floating samples from 0 to 1 are taken with 8 bits"});
  EXPECT_EQ(notesOf(BytesOf("P5 1 1 65535 ab")), Notes{bits});
  EXPECT_EQ(notesOf(BytesOf("P5 1 1 255 a")), Notes());
}

// The others are seen by the tests of packed bitmaps, which share the layout with files.
TEST(Bmp, OldHeadsAndAlpha) {
  const Bytes core = {'B', 'M', 0, 0, 0, 0, 0, 0, 0, 0, 32, 0, 0, 0, 12,   0, 0, 0,
                      2,   0,   1, 0, 1, 0, 1, 0, 3, 2, 1,  6, 5, 4, 0x40, 0, 0, 0};
  EXPECT_EQ(Pixels(core), (Bytes{1, 2, 3, 255, 4, 5, 6, 255}));
  // The longer the head, the more it tells: runs, a resolution, how many colours there are. One
  // told for a single direction holds for both.
  const Bytes rows = {1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 1, 1, 0, 0};
  const Bytes runs = {1, 1, 0, 2, 0, 3, 1, 1, 0, 0, 3, 1, 0, 1};  // three rows up, and one too many
  for (const std::uint32_t head : {16, 20, 32, 36}) {
    BlockWriter writer(true, {'B', 'M'});
    writer.Longs({0, 0, 0, head, 2, 5, 1 | 8 << 16, 1, 0, head < 36 ? 3937u : 0, 7874, 2});
    writer.block.resize(14 + head);
    for (std::uint32_t i = 0; i < (head < 36 ? 256u : 2u); ++i) writer.Number(i * 0x10101, 4);
    const Bytes& packed = head < 20 ? rows : runs;
    writer.block.insert(writer.block.end(), packed.begin(), packed.end());
    EXPECT_EQ(Pixels(writer.block), Greys({1, 1, 0, 1, 0, 0, 0, 0, 1, 0})) << head;
    const imageio::Resolution told = InfoOf(writer.block).metadata.resolution;
    EXPECT_EQ(told.x, head < 32 ? 0 : head < 36 ? 100 : 200);
    EXPECT_EQ(told.y, head < 32 ? 0 : 200);
  }
  Bytes alpha = {'B', 'M', 0, 0, 0, 0, 0, 0, 0, 0, 70, 0,  0, 0, 40, 0, 0,
                 0,   1,   0, 0, 0, 1, 0, 0, 0, 1, 0,  32, 0, 6, 0,  0, 0};
  alpha.resize(14 + 40);
  for (std::size_t i = 0; i < 4; ++i) {  // a field of each byte
    alpha.resize(alpha.size() + 4);
    alpha[54 + 5 * i] = 0xFF;
  }
  alpha.insert(alpha.end(), {1, 2, 3, 0});
  EXPECT_EQ(Pixels(alpha), (Bytes{1, 2, 3, 0}));
}

// Pictures with their reference as PNG.
TEST(Reference, IsMet) {
  const std::pair<const char*, double> cases[] = {{"mandatory-bitmasks.bmp", 0}, {"cat.jpg", 1.0}};
  for (const auto& [name, tolerance] : cases) {
    const auto file = DataFolder() / "test-images" / "reftests" / name;
    ImageReader reader(file);
    ImageReader reference(file.string() + ".ref.png");
    const TestPicture picture = TestPicture::Of(reader);
    const TestPicture expected = TestPicture::Of(reference);
    ASSERT_EQ(picture.colour.size(), expected.colour.size()) << name;
    EXPECT_LE(picture.DistanceTo(expected), tolerance) << name;
  }
}

}  // namespace
