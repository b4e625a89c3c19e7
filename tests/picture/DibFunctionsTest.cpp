// The functions for packed bitmaps: every shape against a plain model, and heads that lie.
#include "picture/DibFunctions.h"

#include <gtest/gtest.h>
#include <objbase.h>
#include <winbase.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <vector>

#ifdef _WIN32
#include <wingdi.h>
#endif

namespace {

using Bytes = std::vector<std::uint8_t>;
using Colour = std::array<std::uint8_t, 3>;  // blue, green, red

void Put(Bytes& bytes, std::int64_t value, int count) {
  for (int i = 0; i < count; ++i) {
    bytes.push_back(static_cast<std::uint8_t>(static_cast<std::uint64_t>(value) >> 8 * i));
  }
}

std::uint32_t Get(const Bytes& bytes, std::size_t at, int count) {
  std::uint32_t value = 0;
  for (int i = count - 1; i >= 0; --i)
    value = value << 8 | bytes.at(at + static_cast<std::size_t>(i));
  return value;
}

// A bitmap in the caller's hands.
class Dib {
 public:
  Dib(DibHandle given) : handle(given) {}  // NOLINT: as a handle is
  explicit Dib(const Bytes& bytes) : handle(GlobalAlloc(GMEM_MOVEABLE, bytes.size())) {
    std::memcpy(GlobalLock(handle), bytes.data(), bytes.size());
    GlobalUnlock(handle);
  }
  ~Dib() {
    if (handle) {
      EXPECT_EQ(DibFree(handle), 1);
    }
  }
  Dib(const Dib&) = delete;
  Dib& operator=(const Dib&) = delete;

  operator DibHandle() const { return handle; }  // NOLINT: as a handle is
  Bytes Content() const {
    if (!handle) return {};
    const auto* first = static_cast<const std::uint8_t*>(GlobalLock(handle));
    Bytes bytes(first, first + GlobalSize(handle));
    GlobalUnlock(handle);
    return bytes;
  }

 private:
  DibHandle handle;
};

struct Shape {
  int bits;
  int width, height;
  std::vector<std::uint32_t> colours;  // 0xRRGGBB
  int compression = 0;
  std::vector<std::uint32_t> fields = {};
};

Bytes HeadOf(const Shape& shape) {
  Bytes dib;
  for (const std::int64_t field : {40, shape.width, shape.height}) Put(dib, field, 4);
  Put(dib, 1, 2);
  Put(dib, shape.bits, 2);
  Put(dib, shape.compression, 4);
  for (const std::int64_t field : {0, 0, 0}) Put(dib, field, 4);
  Put(dib, static_cast<std::int64_t>(shape.colours.size()), 4);
  Put(dib, 0, 4);
  for (const std::uint32_t field : shape.fields) Put(dib, field, 4);
  for (const std::uint32_t colour : shape.colours) Put(dib, colour, 4);
  return dib;
}

int StrideOf(const Shape& shape) {
  return (shape.width * std::abs(shape.bits) + 31) / 32 * 4;
}

// Random rows behind the head.
Bytes RandomDib(const Shape& shape, unsigned seed) {
  Bytes dib = HeadOf(shape);
  std::mt19937 random(seed);
  for (int i = 0; i < StrideOf(shape) * std::abs(shape.height); ++i) {
    dib.push_back(static_cast<std::uint8_t>(random()));
  }
  return dib;
}

std::vector<std::uint32_t> RandomColours(std::size_t count, unsigned seed) {
  std::mt19937 random(seed);
  std::vector<std::uint32_t> colours;
  for (std::size_t i = 0; i < count; ++i) colours.push_back(random() & 0xFFFFFF);
  return colours;
}

std::uint8_t FieldOf(std::uint32_t pixel, std::uint32_t mask) {
  if (mask == 0) return 0;
  std::uint64_t value = pixel & mask;
  std::uint64_t most = mask;
  while ((most & 1) == 0) most >>= 1, value >>= 1;
  return static_cast<std::uint8_t>((value * 255 + most / 2) / most);
}

// The pixel at a place that counts from the top left corner.
Colour ModelPixel(const Shape& shape, const Bytes& dib, int x, int y) {
  const std::size_t rowsAt = 40 + 4 * shape.fields.size() + 4 * shape.colours.size();
  const int stored = shape.height < 0 ? y : shape.height - 1 - y;
  const std::size_t row = rowsAt + static_cast<std::size_t>(stored * StrideOf(shape));
  const int bits = std::abs(shape.bits);
  const std::size_t at = row + static_cast<std::size_t>(x * bits / 8);
  if (bits == 24) return {dib.at(at), dib.at(at + 1), dib.at(at + 2)};
  if (bits > 8) {
    const std::uint32_t pixel = Get(dib, at, bits / 8);
    const std::vector<std::uint32_t> usual =
        bits == 16 ? std::vector<std::uint32_t>{0x7C00, 0x3E0, 0x1F}
                   : std::vector<std::uint32_t>{0xFF0000, 0xFF00, 0xFF};
    const auto& fields = shape.fields.empty() ? usual : shape.fields;
    return {FieldOf(pixel, fields[2]), FieldOf(pixel, fields[1]), FieldOf(pixel, fields[0])};
  }
  const unsigned index = dib.at(at) >> (8 - bits - x * bits % 8) & ((1u << bits) - 1);
  const std::uint32_t rgb = shape.bits < 0                 ? index * 0x10101
                            : index < shape.colours.size() ? shape.colours[index]
                                                           : 0;
  return {static_cast<std::uint8_t>(rgb), static_cast<std::uint8_t>(rgb >> 8),
          static_cast<std::uint8_t>(rgb >> 16)};
}

Colour PixelOf24(const Bytes& dib, int x, int y) {
  const Shape shape{24, static_cast<int>(Get(dib, 4, 4)), static_cast<int>(Get(dib, 8, 4)), {}};
  return ModelPixel(shape, dib, x, y);
}

std::vector<Shape> AllShapes() {
  std::vector<Shape> shapes;
  for (const int height : {5, -5}) {
    for (const int width : {1, 7, 9, 33}) {
      for (const int bits : {1, 4, 8}) {
        shapes.push_back({bits, width, height, RandomColours(std::size_t{1} << bits, 3)});
      }
      for (const int bits : {-8, 16, 24, 32}) shapes.push_back({bits, width, height, {}});
    }
  }
  shapes.push_back({8, 6, 4, RandomColours(17, 4)});
  shapes.push_back({24, 6, 4, RandomColours(3, 4)});
  shapes.push_back({16, 6, 4, {}, 3, {0xF800, 0x07E0, 0x001F}});
  shapes.push_back({32, 6, -4, {}, 3, {0x3FF00000, 0x000FFC00, 0x000003FF}});
  return shapes;
}

std::string NameOf(const Shape& shape) {
  return std::to_string(shape.bits) + " bits, " + std::to_string(shape.width) + "x" +
         std::to_string(shape.height) + ", " + std::to_string(shape.colours.size()) + " colours";
}

TEST(DibFunctions, EveryShapeIsReadAsThePlainModelReadsIt) {
  for (const Shape& shape : AllShapes()) {
    SCOPED_TRACE(NameOf(shape));
    const Bytes bytes = RandomDib(shape, 1);
    const Dib dib(bytes);
    const Dib copy = DibReadDib(bytes.data(), bytes.size());
    const Dib grey = GolorGray(dib);
    for (const Dib* from : {&dib, &copy}) {
      const Dib made = Make24BitDib(*from);
      ASSERT_TRUE(made);
      const Bytes content = made.Content();
      const int height = std::abs(shape.height);
      EXPECT_EQ(content.size(),
                40u + static_cast<std::size_t>((shape.width * 3 + 3) / 4 * 4 * height));
      EXPECT_EQ(DIBFileSize(made), content.size() + 14);
      EXPECT_EQ(static_cast<int>(Get(content, 8, 4)), height);
      for (int y = 0; y < height; ++y) {
        for (int x = 0; x < shape.width; ++x) {
          const Colour colour = ModelPixel(shape, bytes, x, y);
          ASSERT_EQ(PixelOf24(content, x, y), colour) << x << ", " << y;
          const int expected = (77 * colour[2] + 151 * colour[1] + 28 * colour[0]) / 256;
          const Shape greys{8, shape.width, height, std::vector<std::uint32_t>(256)};
          const Bytes& greyBytes = grey.Content();
          ASSERT_EQ(greyBytes.at(40 + 1024 +
                                 static_cast<std::size_t>((height - 1 - y) * StrideOf(greys) + x)),
                    expected);
        }
      }
    }
    EXPECT_EQ(DIBFileSize(dib), bytes.size() + 14);
  }
}

TEST(DibFunctions, ReadingKeepsDepthColoursAndBits) {
  for (const Shape& shape : AllShapes()) {
    if (shape.bits == 24 && !shape.colours.empty()) continue;  // a table that nobody needs
    SCOPED_TRACE(NameOf(shape));
    const Bytes bytes = RandomDib(shape, 1);
    const Bytes copy = Dib(DibReadDib(bytes.data(), bytes.size())).Content();
    ASSERT_EQ(copy.size(), bytes.size());
    EXPECT_EQ(static_cast<std::int16_t>(Get(copy, 14, 2)), shape.bits);
    EXPECT_EQ(Get(copy, 16, 4), static_cast<unsigned>(shape.compression));
    const auto height = static_cast<std::size_t>(std::abs(shape.height));
    const auto stride = static_cast<std::size_t>(StrideOf(shape));
    const std::size_t rowsAt = bytes.size() - stride * height;
    EXPECT_EQ(Bytes(copy.begin() + 40, copy.begin() + static_cast<std::ptrdiff_t>(rowsAt)),
              Bytes(bytes.begin() + 40, bytes.begin() + static_cast<std::ptrdiff_t>(rowsAt)));
    EXPECT_EQ(Get(copy, 20, 4), stride * height);
  }
}

TEST(DibFunctions, BlankBitmaps) {
  for (const int bits : {1, 4, 8, 16, 24, 32, -8}) {
    const Bytes content = Dib(DibCreate(bits, 9, 3)).Content();
    const std::size_t colours = bits > 0 && bits <= 8 ? std::size_t{1} << bits : 0;
    const Shape shape{bits, 9, 3, {}};
    ASSERT_EQ(content.size(), 40 + 4 * colours + static_cast<std::size_t>(3 * StrideOf(shape)));
    EXPECT_EQ(Get(content, 32, 4), colours);
    EXPECT_EQ(content.back(), std::abs(bits) == 8 ? 255 : 0);
    if (bits == 1) {
      EXPECT_EQ(Get(content, 44, 4), 0xFFFFFFu);
    }
    if (bits == 8) {
      EXPECT_EQ(Get(content, 40 + 4 * 17, 4), 0x800000u);
    }
  }
  const std::uint32_t own[] = {0x123456, 0xFFEEDD};
  const Bytes topDown = Dib(DibCreateEx(4, 5, -2, own, 2)).Content();
  EXPECT_EQ(static_cast<int>(Get(topDown, 8, 4)), -2);
  EXPECT_EQ(Get(topDown, 32, 4), 2u);
  EXPECT_EQ(Get(topDown, 44, 4), 0xFFEEDDu);
  EXPECT_EQ(topDown.size(), 40u + 8 + 2 * 4);
  const struct {
    int bits, width, height;
  } refused[] = {{2, 1, 1},
                 {-24, 1, 1},
                 {0, 1, 1},
                 {8, 0, 1},
                 {8, 1, 0},
                 {8, -1, 1},
                 {32, INT_MAX, INT_MAX},
                 {32, 23171, 23171},
                 {1, INT_MAX, 8},
                 {INT_MIN, 1, 1}};
  for (const auto& c : refused) EXPECT_FALSE(DibCreate(c.bits, c.width, c.height)) << c.bits;
  EXPECT_FALSE(DibCreate(24, 1, -1));
  EXPECT_FALSE(DibCreateEx(24, 1, INT_MIN, nullptr, 0));
  EXPECT_FALSE(DibCreateEx(1, 1, 1, own, 3));
  EXPECT_FALSE(DibCreateEx(24, 1, 1, own, 1));
  EXPECT_FALSE(DibCreateEx(8, 1, 1, nullptr, 1));
  EXPECT_EQ(DibFree(nullptr), 0);
}

TEST(DibFunctions, UnpacksRunLengths) {
  Bytes eight = HeadOf({8, 6, 3, RandomColours(256, 5), 1});
  // Two runs; a literal of three and the end of the row; a jump; the end.
  for (const int byte : {4, 7, 2, 9, 0, 0, 0, 3, 1, 2, 3, 0, 0, 0, 0, 2, 2, 0, 1, 8, 0, 1})
    Put(eight, byte, 1);
  const Bytes unpacked = Dib(DibReadDib(eight.data(), eight.size())).Content();
  const Bytes expected = {7, 7, 7, 7, 9, 9, 0, 0, 1, 2, 3, 0, 0, 0, 0, 0, 0, 0, 8, 0, 0, 0, 0, 0};
  ASSERT_EQ(unpacked.size(), 40 + 1024 + expected.size());
  EXPECT_EQ(Bytes(unpacked.end() - 24, unpacked.end()), expected);
  EXPECT_EQ(Get(unpacked, 16, 4), 0u);

  Bytes four = HeadOf({4, 5, 2, RandomColours(16, 5), 2});
  for (const int byte : {5, 0xFE, 0, 0, 3, 0xAB, 0, 0, 0, 1}) Put(four, byte, 1);
  const Bytes nibbles = Dib(DibReadDib(four.data(), four.size())).Content();
  EXPECT_EQ(Bytes(nibbles.end() - 8, nibbles.end()),
            (Bytes{0xFE, 0xFE, 0xF0, 0, 0xAB, 0xA0, 0, 0}));

  const Dib dib(eight);
  EXPECT_EQ(PixelOf24(Dib(Make24BitDib(dib)).Content(), 5, 2),
            ModelPixel({8, 6, 3, RandomColours(256, 5)}, unpacked, 5, 2));
  for (std::size_t cut = 40 + 1024; cut < eight.size() - 2; ++cut) {
    EXPECT_FALSE(DibReadDib(eight.data(), cut)) << cut;
  }
  const std::uint32_t colour = 0;
  EXPECT_EQ(DibMapToPalette(dib, &colour, 1), 0);
}

TEST(DibFunctions, ReadsFilesAndOldHeads) {
  const Shape shape{8, 8, 4, RandomColours(20, 6)};
  const Bytes dib = RandomDib(shape, 2);
  Bytes file = {'B', 'M'};
  Put(file, static_cast<std::int64_t>(14 + dib.size()), 4);
  Put(file, 0, 4);
  Put(file, 14 + 40 + 80, 4);
  file.insert(file.end(), dib.begin(), dib.end());
  const Bytes fromMemory = Dib(DibReadDib(file.data(), file.size())).Content();
  EXPECT_EQ(fromMemory.size(), dib.size());
  EXPECT_EQ(Bytes(fromMemory.begin() + 40, fromMemory.end()), Bytes(dib.begin() + 40, dib.end()));

  const auto path = std::filesystem::temp_directory_path() /
                    ("fxbox-dib-" + std::to_string(std::random_device()()) + ".bmp");
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(file.data()), static_cast<std::streamsize>(file.size()));
  EXPECT_EQ(Dib(DibOpenFile(path.string().c_str())).Content(), fromMemory);
  std::filesystem::remove(path);
  EXPECT_FALSE(DibOpenFile(path.string().c_str()));
  EXPECT_FALSE(DibOpenFile(nullptr));

  Bytes old;
  Put(old, 12, 4);
  for (const int field : {3, 2, 1, 1}) Put(old, field, 2);
  for (const int byte : {1, 2, 3, 4, 5, 6, 0x40, 0, 0, 0, 0xA0, 0, 0, 0}) Put(old, byte, 1);
  const Bytes young = Dib(DibReadDib(old.data(), old.size())).Content();
  EXPECT_EQ(Bytes(young.begin() + 40, young.end()),
            (Bytes{1, 2, 3, 0, 4, 5, 6, 0, 0x40, 0, 0, 0, 0xA0, 0, 0, 0}));
}

// One field at a time says what cannot be.
TEST(DibFunctions, RefusesHeadsThatLie) {
  const Shape shape{8, 5, 4, RandomColours(256, 7)};
  const Bytes good = RandomDib(shape, 3);
  const struct {
    const char* name;
    std::size_t at;
    std::int64_t value;
    int count;
  } cases[] = {{"no head", 0, 0, 4},
               {"short head", 0, 15, 4},
               {"head beyond the block", 0, 4000, 4},
               {"huge head", 0, -1, 4},
               {"no width", 4, 0, 4},
               {"negative width", 4, -5, 4},
               {"wider than the block", 4, 9, 4},
               {"huge width", 4, INT_MAX, 4},
               {"no height", 8, 0, 4},
               {"higher than the block", 8, 5, 4},
               {"least height", 8, INT_MIN, 4},
               {"huge height", 8, INT_MAX, 4},
               {"no planes", 12, 0, 2},
               {"three planes", 12, 3, 2},
               {"2 bits", 14, 2, 2},
               {"24 bits", 14, 24, 2},
               {"-24 bits", 14, -24, 2},
               {"runs of 4 bits", 16, 2, 4},
               {"a JPEG", 16, 4, 4},
               {"too many colours", 32, 257, 4},
               {"far too many colours", 32, -1, 4}};
  std::vector<std::uint8_t> row(5);
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Bytes bad = good;
    for (int i = 0; i < c.count; ++i) {
      bad[c.at + static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(c.value >> 8 * i);
    }
    const Dib dib(bad);
    const Dib target(DibCreate(24, 10, 10));
    const DibTarget to{nullptr, target};
    const Bytes before = target.Content();
    std::vector<std::uint8_t*> rows(4, row.data());
    EXPECT_FALSE(DibReadDib(bad.data(), bad.size()));
    EXPECT_FALSE(Make24BitDib(dib));
    EXPECT_FALSE(GolorGray(dib));
    EXPECT_FALSE(DibScale(dib, 3, 3));
    EXPECT_EQ(DIBFileSize(dib), 0u);
    EXPECT_EQ(DibSetUsage(dib, shape.colours.data(), 256, 0), 0);
    EXPECT_EQ(DibMapToPalette(dib, shape.colours.data(), 256), 0);
    EXPECT_EQ(DIBPaint(&to, nullptr, dib, nullptr), 0);
    EXPECT_EQ(ConvertMaskDibToArray(dib, rows.data(), 5, 4), 0);
    EXPECT_EQ(dib.Content(), bad);
    EXPECT_EQ(target.Content(), before);
  }
  for (std::size_t cut = 0; cut < good.size(); ++cut) {
    EXPECT_FALSE(DibReadDib(good.data(), cut)) << cut;
  }
  EXPECT_FALSE(Make24BitDib(nullptr));
}

TEST(DibFunctions, Scales) {
  // Exact means: 4 x 2 pixels, each pair of columns becomes one.
  Bytes bytes = HeadOf({24, 4, 2, {}});
  for (int row = 0; row < 2; ++row) {
    for (const int value : {10, 20, 30, 40}) Put(bytes, value * 0x10101 + row, 3);
  }
  const Dib dib(bytes);
  const Bytes half = Dib(DibScale(dib, 2, 2)).Content();
  EXPECT_EQ(PixelOf24(half, 0, 1), (Colour{15, 15, 15}));
  EXPECT_EQ(PixelOf24(half, 1, 0), (Colour{36, 35, 35}));
  const Bytes wide = Dib(DibScale(dib, 8, 1)).Content();
  EXPECT_EQ(PixelOf24(wide, 0, 0), PixelOf24(wide, 1, 0));
  EXPECT_EQ(PixelOf24(wide, 6, 0), (Colour{41, 40, 40}));

  const Shape shape{4, 9, -3, RandomColours(16, 8)};
  const Bytes nibbles = RandomDib(shape, 4);
  const Dib indexed(nibbles);
  for (const auto& [width, height] : {std::pair(9, 3), {4, 2}, {20, 7}, {1, 1}}) {
    const Bytes scaled = Dib(DibScale(indexed, width, height)).Content();
    const Shape now{4, width, height, shape.colours};
    EXPECT_EQ(Get(scaled, 14, 2), 4u);
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        ASSERT_EQ(ModelPixel(now, scaled, x, y),
                  ModelPixel(shape, nibbles, (2 * x + 1) * 9 / (2 * width),
                             (2 * y + 1) * 3 / (2 * height)));
      }
    }
  }
  EXPECT_FALSE(DibScale(dib, 0, 1));
  EXPECT_FALSE(DibScale(dib, 1, -1));
  EXPECT_FALSE(DibScale(dib, INT_MAX, INT_MAX));
}

TEST(DibFunctions, ColourTables) {
  const Shape shape{4, 5, 2, RandomColours(16, 9)};
  const Bytes bytes = RandomDib(shape, 5);
  const Dib dib(bytes);
  EXPECT_EQ(DibSetUsage(dib, nullptr, 0, 1), 1);
  EXPECT_EQ(Get(dib.Content(), 40 + 2 * 15, 2), 15u);
  EXPECT_EQ(DibSetUsage(dib, shape.colours.data(), 16, 0), 1);
  EXPECT_EQ(dib.Content(), bytes);
  EXPECT_EQ(DibSetUsage(dib, shape.colours.data(), 16, 2), 0);
  EXPECT_EQ(DibSetUsage(dib, nullptr, 16, 0), 0);
  EXPECT_EQ(DibSetUsage(Dib(DibCreate(24, 2, 2)), nullptr, 0, 1), 0);

  const std::vector<std::uint32_t> palette = {0x000000, 0xFF0000, 0x00FF00, 0x808080, 0x808080};
  ASSERT_EQ(DibMapToPalette(dib, palette.data(), 5), 1);
  const Bytes mapped = dib.Content();
  for (int y = 0; y < 2; ++y) {
    for (int x = 0; x < 5; ++x) {
      const Colour old = ModelPixel(shape, bytes, x, y);
      Colour best = {};
      int least = INT_MAX;
      for (const std::uint32_t rgb : palette) {
        const Colour c = {static_cast<std::uint8_t>(rgb), static_cast<std::uint8_t>(rgb >> 8),
                          static_cast<std::uint8_t>(rgb >> 16)};
        int distance = 0;
        for (std::size_t i = 0; i < 3; ++i) distance += (c[i] - old[i]) * (c[i] - old[i]);
        if (distance < least) least = distance, best = c;
      }
      std::vector<std::uint32_t> table = palette;
      table.resize(16);
      EXPECT_EQ(ModelPixel({4, 5, 2, table}, mapped, x, y), best);
    }
  }
  // What lies behind the rows is nobody's.
  Bytes longer = bytes;
  longer.resize(bytes.size() + 8, 0x5A);
  const Dib behind(longer);
  ASSERT_EQ(DibMapToPalette(behind, palette.data(), 2), 1);
  Bytes kept = behind.Content();
  kept.erase(kept.begin(), kept.begin() + static_cast<std::ptrdiff_t>(bytes.size()));
  EXPECT_EQ(kept, Bytes(8, 0x5A));
  EXPECT_EQ(DibMapToPalette(dib, palette.data(), 17), 0);
  EXPECT_EQ(DibMapToPalette(Dib(DibCreate(24, 2, 2)), palette.data(), 2), 0);
  EXPECT_EQ(DibMapToPalette(Dib(DibCreate(-8, 2, 2)), palette.data(), 2), 0);
}

TEST(DibFunctions, PaintsWhatLiesWithinTheTarget) {
  const Shape shape{8, 6, 4, RandomColours(256, 10)};
  const Bytes bytes = RandomDib(shape, 6);
  const Dib dib(bytes);
  const Shape maskShape{-8, 6, 4, {}};
  const Bytes maskBytes = RandomDib(maskShape, 7);
  const Dib mask(maskBytes);
  const DibRectangle whole{0, 0, 6, 4};
  const Dib plain(DibCreate(24, 10, 9)), stated(DibCreate(24, 10, 9));
  const DibTarget toPlain{nullptr, plain}, toStated{nullptr, stated};
  EXPECT_EQ(DIBPaint(&toPlain, nullptr, dib, nullptr), 1);
  EXPECT_EQ(DIBPaint(&toStated, &whole, dib, &whole), 1);
  EXPECT_EQ(plain.Content(), stated.Content());
  const struct {
    DibRectangle to, from;
  } cases[] = {{{2, 3, 6, 4}, whole},           {{-3, -2, 6, 4}, whole},
               {{8, 7, 6, 4}, whole},           {{0, 0, 12, 9}, whole},
               {{-5, -5, 20, 20}, whole},       {{1, 1, 2, 2}, whole},
               {{3, 2, 5, 5}, {1, 1, 3, 2}},    {{100, 100, 6, 4}, whole},
               {{INT_MAX - 2, 0, 6, 4}, whole}, {{INT_MIN, INT_MIN, INT_MAX, INT_MAX}, whole}};
  for (const int height : {9, -9}) {
    const Shape targetShape{24, 10, height, {}};
    const Bytes before = RandomDib(targetShape, 8);
    for (const auto& c : cases) {
      SCOPED_TRACE(std::to_string(c.to.x) + "," + std::to_string(c.to.y));
      for (const bool masked : {false, true}) {
        const Dib target(before);
        const DibTarget to{nullptr, target};
        ASSERT_EQ(masked ? DIBDrawWithMask(&to, &c.to, dib, mask, &c.from)
                         : DIBPaint(&to, &c.to, dib, &c.from),
                  1);
        const Bytes after = target.Content();
        for (int y = 0; y < 9; ++y) {
          for (int x = 0; x < 10; ++x) {
            Colour expected = ModelPixel(targetShape, before, x, y);
            const std::int64_t px = std::int64_t{x} - c.to.x, py = std::int64_t{y} - c.to.y;
            if (px >= 0 && py >= 0 && px < c.to.width && py < c.to.height) {
              const int sx = static_cast<int>(c.from.x + (2 * px + 1) * c.from.width /
                                                             (2 * std::int64_t{c.to.width}));
              const int sy = static_cast<int>(c.from.y + (2 * py + 1) * c.from.height /
                                                             (2 * std::int64_t{c.to.height}));
              const Colour fresh = ModelPixel(shape, bytes, sx, sy);
              const int m = masked ? ModelPixel(maskShape, maskBytes, sx, sy)[0] : 0;
              for (std::size_t i = 0; i < 3; ++i) {
                expected[i] =
                    static_cast<std::uint8_t>((fresh[i] * (255 - m) + expected[i] * m) / 255);
              }
            }
            ASSERT_EQ(ModelPixel(targetShape, after, x, y), expected) << x << ", " << y;
          }
        }
      }
    }
  }
}

TEST(DibFunctions, RefusesToPaint) {
  const Dib dib(RandomDib({8, 6, 4, RandomColours(256, 10)}, 6));
  const Dib target(DibCreate(24, 5, 5));
  const Dib eight(DibCreate(8, 5, 5));
  const Dib small(DibCreate(-8, 5, 4));
  const Dib colours(DibCreate(24, 6, 4));
  const DibTarget to{nullptr, target}, nowhere{}, both{target, target}, flat{nullptr, eight};
  const DibRectangle empty{0, 0, 0, 4}, outside{1, 0, 6, 4}, negative{-1, 0, 2, 2};
  EXPECT_EQ(DIBPaint(nullptr, nullptr, dib, nullptr), 0);
  for (const DibTarget* bad : {&nowhere, &both, &flat})
    EXPECT_EQ(DIBPaint(bad, nullptr, dib, nullptr), 0);
  EXPECT_EQ(DIBPaint(&to, &empty, dib, nullptr), 0);
  for (const DibRectangle* bad : {&empty, &outside, &negative})
    EXPECT_EQ(DIBPaint(&to, nullptr, dib, bad), 0);
  EXPECT_EQ(DIBPaint(&to, nullptr, nullptr, nullptr), 0);
  for (const Dib* bad : {&small, &colours})
    EXPECT_EQ(DIBDrawWithMask(&to, nullptr, dib, *bad, nullptr), 0);
  EXPECT_EQ(DIBDrawWithMask(&to, nullptr, dib, nullptr, nullptr), 0);
  EXPECT_EQ(DIBPaint(&to, nullptr, target, nullptr), 1) << "a bitmap on itself";
}

#ifdef _WIN32
// What a device shows afterwards is what a bitmap holds.
TEST(DibFunctions, PaintsOnDevices) {
  const Dib dib(RandomDib({8, 6, 4, RandomColours(256, 10)}, 6));
  const Dib mask(RandomDib({-8, 6, 4, {}}, 7));
  const Dib target(DibCreate(24, 10, 9));
  const DibTarget bitmap{nullptr, target};
  const Bytes blank = target.Content();
  const HDC context = CreateCompatibleDC(nullptr);
  void* bits = nullptr;
  const HBITMAP section =
      CreateDIBSection(context, reinterpret_cast<const BITMAPINFO*>(blank.data()), DIB_RGB_COLORS,
                       &bits, nullptr, 0);
  ASSERT_TRUE(section);
  const HGDIOBJ old = SelectObject(context, section);
  const DibTarget device{context, nullptr};
  for (const DibRectangle& to : {DibRectangle{1, 2, 6, 4}, {-3, 4, 12, 9}, {50, 50, 2, 2}}) {
    EXPECT_EQ(DIBPaint(&device, &to, dib, nullptr), 1);
    EXPECT_EQ(DIBDrawWithMask(&device, &to, dib, mask, nullptr), 1);
    EXPECT_EQ(DIBPaint(&bitmap, &to, dib, nullptr), 1);
    EXPECT_EQ(DIBDrawWithMask(&bitmap, &to, dib, mask, nullptr), 1);
    GdiFlush();
    const Bytes content = target.Content();
    EXPECT_EQ(std::memcmp(bits, content.data() + 40, content.size() - 40), 0);
  }
  SelectObject(context, old);
  DeleteObject(section);
  DeleteDC(context);
}
#else
TEST(DibFunctions, ThereAreNoDevices) {
  int anything = 0;
  const DibTarget device{&anything, nullptr};
  const Dib dib(DibCreate(24, 2, 2)), mask(DibCreate(-8, 2, 2));
  EXPECT_EQ(DIBPaint(&device, nullptr, dib, nullptr), 0);
  EXPECT_EQ(DIBDrawWithMask(&device, nullptr, dib, mask, nullptr), 0);
}
#endif

TEST(DibFunctions, MasksComeAndGoAsRows) {
  std::vector<Bytes> rows = {{0, 1, 2, 3, 4}, {250, 251, 252, 253, 255}};
  const std::uint8_t* const in[] = {rows[0].data(), rows[1].data()};
  const Dib mask(ConvertMaskArrayToDib(in, 5, 2));
  const Bytes content = mask.Content();
  ASSERT_EQ(content.size(), 40u + 1024 + 16);
  EXPECT_EQ(Get(content, 14, 2), 8u);
  EXPECT_EQ(Get(content, 32, 4), 256u);
  EXPECT_EQ(Get(content, 40 + 4 * 200, 4), 200u * 0x10101);
  EXPECT_EQ(content.at(40 + 1024 + 8 + 4), 255) << "row 0 is the bottom row";

  std::vector<Bytes> back(2, Bytes(6, 77));
  std::uint8_t* const out[] = {back[0].data(), back[1].data()};
  ASSERT_EQ(ConvertMaskDibToArray(mask, out, 5, 2), 1);
  for (std::size_t y = 0; y < 2; ++y) {
    EXPECT_EQ(Bytes(back[y].begin(), back[y].end() - 1), rows[y]);
    EXPECT_EQ(back[y].back(), 77);
  }
  ASSERT_EQ(ConvertMaskDibToArray(Dib(RandomDib({-8, 5, -2, {}}, 1)), out, 5, 2), 1);
  EXPECT_EQ(back[0][0], RandomDib({-8, 5, -2, {}}, 1).at(40 + 8))
      << "the bottom row is stored last";
  EXPECT_EQ(ConvertMaskDibToArray(mask, out, 4, 2), 0);
  EXPECT_EQ(ConvertMaskDibToArray(mask, out, 5, 1), 0);
  EXPECT_EQ(ConvertMaskDibToArray(Dib(DibCreate(24, 5, 2)), out, 5, 2), 0);
  EXPECT_EQ(ConvertMaskDibToArray(mask, nullptr, 5, 2), 0);
  std::uint8_t* const gap[] = {back[0].data(), nullptr};
  EXPECT_EQ(ConvertMaskDibToArray(mask, gap, 5, 2), 0);
  EXPECT_FALSE(ConvertMaskArrayToDib(nullptr, 5, 2));
  EXPECT_FALSE(ConvertMaskArrayToDib(in, 0, 2));
  EXPECT_FALSE(ConvertMaskArrayToDib(in, 5, -1));
}

}  // namespace
