// The functions for packed bitmaps: every shape against a plain model, and heads that lie.
#include "picture/DibFunctions.h"

#include <gtest/gtest.h>
#include <objbase.h>
#include <winbase.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstring>
#include <random>
#include <vector>

#include "imageio/StoredBitmap.h"
#include "tests/imageio/TestPicture.h"
#include "tests/platform/Support.h"

#ifdef _WIN32
#include <wingdi.h>
#endif

namespace {

using Bytes = std::vector<std::uint8_t>;
using Colour = std::array<std::uint8_t, 3>;  // blue, green, red
using Pixels = std::vector<Colour>;          // from the top left corner
using Colours = std::vector<std::uint32_t>;  // 0xRRGGBB

void Put(Bytes& bytes, int count, std::initializer_list<std::int64_t> values) {
  for (const std::int64_t value : values) {
    for (int i = 0; i < count; ++i) bytes.push_back(static_cast<std::uint8_t>(value >> 8 * i));
  }
}

std::uint32_t Get(const Bytes& bytes, std::size_t at, int count) {
  std::uint32_t value = 0;
  while (--count >= 0) value = value << 8 | bytes.at(at + static_cast<std::size_t>(count));
  return value;
}

Colour ColourOf(std::uint32_t rgb) {
  return {static_cast<std::uint8_t>(rgb), static_cast<std::uint8_t>(rgb >> 8),
          static_cast<std::uint8_t>(rgb >> 16)};
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
  Colours colours = {};
  int compression = 0;
  Colours fields = {};

  std::size_t Stride() const {
    return static_cast<std::size_t>((width * std::abs(bits) + 31) / 32 * 4);
  }
  std::size_t Rows() const { return Stride() * static_cast<std::size_t>(std::abs(height)); }
  std::string Name() const {
    return std::to_string(bits) + " bits, " + std::to_string(width) + "x" + std::to_string(height) +
           ", " + std::to_string(colours.size()) + " colours";
  }
};

Bytes HeadOf(const Shape& shape) {
  Bytes dib;
  Put(dib, 4, {40, shape.width, shape.height});
  Put(dib, 2, {1, shape.bits});
  Put(dib, 4, {shape.compression, 0, 0, 0, static_cast<std::int64_t>(shape.colours.size()), 0});
  for (const Colours& entries : {shape.fields, shape.colours}) {
    for (const std::uint32_t entry : entries) Put(dib, 4, {entry});
  }
  return dib;
}

// Random rows behind the head.
Bytes RandomDib(const Shape& shape, unsigned seed) {
  Bytes dib = HeadOf(shape);
  std::mt19937 random(seed);
  for (std::size_t i = 0; i < shape.Rows(); ++i) dib.push_back(static_cast<std::uint8_t>(random()));
  return dib;
}

Colours RandomColours(std::size_t count, unsigned seed) {
  std::mt19937 random(seed);
  Colours colours(count);
  for (std::uint32_t& colour : colours) colour = random() & 0xFFFFFF;
  return colours;
}

std::uint8_t FieldOf(std::uint32_t pixel, std::uint32_t mask) {
  std::uint64_t value = pixel & mask;
  std::uint64_t most = mask;
  while ((most & 1) == 0) most >>= 1, value >>= 1;
  return static_cast<std::uint8_t>((value * 255 + most / 2) / most);
}

// The pixel at a place that counts from the top left corner.
Colour ModelPixel(const Shape& shape, const Bytes& dib, int x, int y) {
  const std::size_t stored = static_cast<std::size_t>(shape.height < 0 ? y : shape.height - 1 - y);
  const int bits = std::abs(shape.bits);
  const std::size_t at =
      dib.size() - shape.Rows() + stored * shape.Stride() + static_cast<std::size_t>(x * bits / 8);
  if (bits == 24) return ColourOf(Get(dib, at, 3));
  if (bits > 8) {
    const std::uint32_t pixel = Get(dib, at, bits / 8);
    const Colours usual =
        bits == 16 ? Colours{0x7C00, 0x3E0, 0x1F} : Colours{0xFF0000, 0xFF00, 0xFF};
    const Colours& fields = shape.fields.empty() ? usual : shape.fields;
    return {FieldOf(pixel, fields[2]), FieldOf(pixel, fields[1]), FieldOf(pixel, fields[0])};
  }
  const unsigned index = dib.at(at) >> (8 - bits - x * bits % 8) & ((1u << bits) - 1);
  if (shape.bits < 0) return ColourOf(index * 0x10101);
  return index < Get(dib, 32, 4) ? ColourOf(Get(dib, 40 + 4 * index, 4)) : Colour{};
}

Pixels Model(const Shape& shape, const Bytes& dib) {
  Pixels pixels;
  for (int i = 0; i < shape.width * std::abs(shape.height); ++i) {
    pixels.push_back(ModelPixel(shape, dib, i % shape.width, i / shape.width));
  }
  return pixels;
}

// By our own functions, which the model has seen.
Pixels Seen(DibHandle dib) {
  const Bytes bytes = Dib(Make24BitDib(dib)).Content();
  return Model({24, static_cast<int>(Get(bytes, 4, 4)), static_cast<int>(Get(bytes, 8, 4))}, bytes);
}

Bytes FileOf(const Bytes& dib, std::size_t rowsAt) {
  Bytes file = {'B', 'M'};
  Put(file, 4, {static_cast<int>(14 + dib.size()), 0, static_cast<int>(14 + rowsAt)});
  file.insert(file.end(), dib.begin(), dib.end());
  return file;
}

// As the reader of picture files sees one.
Pixels Decoded(const Bytes& file) {
  test::TestPicture picture = test::TestPicture::OfBytes(file);
  Pixels pixels;
  for (int i = 0; i < picture.width * picture.height; ++i) {
    const BYTE* const pixel = picture.Pixel(i % picture.width, i / picture.width);
    pixels.push_back({pixel[0], pixel[1], pixel[2]});
    EXPECT_EQ(picture.Mask(i % picture.width, i / picture.width), 0);
  }
  return pixels;
}

// As boxes see one that is stored, with more behind it; empty where it cannot be.
Pixels Stored(Bytes dib) {
  const std::size_t size = dib.size();
  dib.resize(size + 3);
  const auto stored = imageio::StoredBitmap::Parse(dib);
  EXPECT_EQ(stored ? stored->Bytes() : size, size);
  Pixels pixels;
  for (int y = stored ? stored->Height() : 0; y-- > 0;) {
    std::vector<Colour> row(static_cast<std::size_t>(stored->Width()));
    stored->ReadColours(y, row[0].data());
    pixels.insert(pixels.end(), row.begin(), row.end());
  }
  dib.resize(size - 1);
  EXPECT_FALSE(imageio::StoredBitmap::Parse(dib));
  return pixels;
}

std::vector<Shape> AllShapes() {
  std::vector<Shape> shapes;
  for (const int height : {5, -5}) {
    for (const int width : {1, 7, 9, 33}) {
      for (const int bits : {1, 4, 8}) {
        shapes.push_back({bits, width, height, RandomColours(std::size_t{1} << bits, 3)});
      }
      for (const int bits : {-8, 16, 24, 32}) shapes.push_back({bits, width, height});
    }
  }
  shapes.push_back({8, 6, 4, RandomColours(17, 4)});
  shapes.push_back({24, 6, 4, RandomColours(3, 4)});
  shapes.push_back({16, 6, 4, {}, 3, {0xF800, 0x07E0, 0x001F}});
  shapes.push_back({32, 6, -4, {}, 3, {0x3FF00000, 0x000FFC00, 0x000003FF}});
  return shapes;
}

TEST(DibFunctions, EveryShapeIsReadAsThePlainModelReadsIt) {
  for (const Shape& shape : AllShapes()) {
    SCOPED_TRACE(shape.Name());
    const Bytes bytes = RandomDib(shape, 1);
    const Dib dib(bytes);
    const Dib copy = DibReadDib(bytes.data(), bytes.size());
    const int height = std::abs(shape.height);
    const Pixels pixels = Model(shape, bytes);
    const Shape plain{24, shape.width, height};
    for (const Dib* from : {&dib, &copy}) {
      const Dib made = Make24BitDib(*from);
      ASSERT_EQ(made.Content().size(), 40 + plain.Rows());
      EXPECT_EQ(Model(plain, made.Content()), pixels);
      EXPECT_EQ(DIBFileSize(made), 14 + 40 + plain.Rows());
    }
    Pixels greys;
    for (const auto& [blue, green, red] : pixels) {
      greys.push_back(ColourOf((77u * red + 151u * green + 28u * blue) / 256 * 0x10101));
    }
    EXPECT_EQ(Model({8, shape.width, height}, Dib(GolorGray(dib)).Content()), greys);
    EXPECT_EQ(DIBFileSize(dib), bytes.size() + 14);
    if (shape.bits > 0) {
      EXPECT_EQ(Decoded(FileOf(bytes, bytes.size() - shape.Rows())), pixels);
    }
    const bool isStored = shape.height > 0 && shape.bits != 16;
    EXPECT_EQ(Stored(bytes), isStored ? pixels : Pixels());
    // The copy keeps depth, colours and fields.
    if (shape.bits == 24 && !shape.colours.empty()) continue;  // a table that nobody needs
    Bytes head(bytes.begin(), bytes.end() - static_cast<std::ptrdiff_t>(shape.Rows()));
    for (std::size_t i = 0; i < 4; ++i) {
      head[8 + i] = static_cast<std::uint8_t>(height >> 8 * i);
      head[20 + i] = static_cast<std::uint8_t>(shape.Rows() >> 8 * i);
    }
    Bytes kept = copy.Content();
    ASSERT_EQ(kept.size(), bytes.size());
    kept.resize(head.size());
    EXPECT_EQ(kept, head);
  }
}

TEST(DibFunctions, BlankBitmaps) {
  for (const int bits : {1, 4, 8, 16, 24, 32, -8}) {
    const Bytes content = Dib(DibCreate(bits, 9, 3)).Content();
    const std::size_t colours = bits > 0 && bits <= 8 ? std::size_t{1} << bits : 0;
    ASSERT_EQ(content.size(), (40 + 4 * colours + Shape{bits, 9, 3}.Rows()));
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
  for (const auto& [bits, width, height] : {std::array{2, 1, 1},
                                            {-24, 1, 1},
                                            {0, 1, 1},
                                            {8, 0, 1},
                                            {8, 1, 0},
                                            {8, -1, 1},
                                            {32, INT_MAX, INT_MAX},
                                            {32, 23171, 23171},
                                            {1, INT_MAX, 8},
                                            {INT_MIN, 1, 1},
                                            {24, 1, -1}}) {
    EXPECT_FALSE(DibCreate(bits, width, height)) << bits;
  }
  EXPECT_FALSE(DibCreateEx(24, 1, INT_MIN, nullptr, 0));
  EXPECT_FALSE(DibCreateEx(1, 1, 1, own, 3));
  EXPECT_FALSE(DibCreateEx(24, 1, 1, own, 1));
  EXPECT_FALSE(DibCreateEx(8, 1, 1, nullptr, 1));
  EXPECT_EQ(DibFree(nullptr), 0);
}

TEST(DibFunctions, UnpacksRunLengths) {
  const struct {
    Shape shape;
    Bytes runs, rows;
  } cases[] = {// Two runs; a literal of three and the end of the row; a jump; the end.
               {{8, 6, 3, RandomColours(256, 5), 1},
                {4, 7, 2, 9, 0, 0, 0, 3, 1, 2, 3, 0, 0, 0, 0, 2, 2, 0, 1, 8, 0, 1},
                {7, 7, 7, 7, 9, 9, 0, 0, 1, 2, 3, 0, 0, 0, 0, 0, 0, 0, 8, 0, 0, 0, 0, 0}},
               // A jump within the row.
               {{8, 5, 1, RandomColours(256, 5), 1},
                {1, 5, 0, 2, 2, 0, 1, 6, 0, 1},
                {5, 0, 0, 6, 0, 0, 0, 0}},
               {{4, 5, 2, RandomColours(16, 5), 2},
                {5, 0xFE, 0, 0, 3, 0xAB, 0, 0, 0, 1},
                {0xFE, 0xFE, 0xF0, 0, 0xAB, 0xA0, 0, 0}}};
  for (const auto& [shape, runs, rows] : cases) {
    SCOPED_TRACE(shape.Name());
    Bytes packed = HeadOf(shape), plain = packed;
    plain[16] = 0;  // no compression
    plain[20] = static_cast<std::uint8_t>(rows.size());
    packed.insert(packed.end(), runs.begin(), runs.end());
    plain.insert(plain.end(), rows.begin(), rows.end());
    EXPECT_EQ(Dib(DibReadDib(packed.data(), packed.size())).Content(), plain);
    const Dib dib(packed);
    EXPECT_EQ(Seen(dib), Seen(Dib(plain)));
    EXPECT_EQ(Decoded(FileOf(packed, packed.size() - runs.size())), Seen(dib));
    EXPECT_EQ(DibMapToPalette(dib, shape.colours.data(), 1), 0);
    for (std::size_t cut = packed.size() - runs.size(); cut < packed.size() - 2; ++cut) {
      EXPECT_FALSE(DibReadDib(packed.data(), cut)) << cut;
    }
  }
}

TEST(DibFunctions, ReadsFilesAndOldHeads) {
  const Shape shape{8, 8, 4, RandomColours(20, 6)};
  const Bytes dib = RandomDib(shape, 2);
  const Bytes file = FileOf(dib, 40 + 80);
  const Bytes fromMemory = Dib(DibReadDib(file.data(), file.size())).Content();
  EXPECT_EQ(fromMemory.size(), dib.size());
  EXPECT_EQ(Bytes(fromMemory.begin() + 40, fromMemory.end()), Bytes(dib.begin() + 40, dib.end()));

  const testing_support::TemporaryFolder folder;
  const auto path = folder / "a.bmp";
  EXPECT_FALSE(DibOpenFile(path.string().c_str()));
  testing_support::WriteFile(path, {file.begin(), file.end()});
  EXPECT_EQ(Dib(DibOpenFile(path.string().c_str())).Content(), fromMemory);
  EXPECT_FALSE(DibOpenFile(nullptr));

  Bytes old;
  Put(old, 4, {12});
  Put(old, 2, {3, 2, 1, 1});
  Put(old, 1, {1, 2, 3, 4, 5, 6, 0x40, 0, 0, 0, 0xA0, 0, 0, 0});
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
               {"7 bits", 14, 7, 2},
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
    // Nobody trusts the number of planes; files may have 2 bits, and more colours than they need.
    if (c.at != 12) {
      EXPECT_FALSE(imageio::StoredBitmap::Parse(bad));
    }
    if (c.at != 12 && c.at != 32 && (c.at != 14 || c.value != 2)) {
      EXPECT_THROW(Decoded(FileOf(bad, 40 + 1024)), imageio::ImageError);
    }
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
  Bytes bytes = HeadOf({24, 4, 2});
  for (const int row : {0, 1}) {
    for (const int value : {10, 20, 30, 40}) Put(bytes, 3, {value * 0x10101 + row});
  }
  const Dib dib(bytes);
  const auto pixels = [](std::initializer_list<std::uint32_t> colours) {
    Pixels made;
    for (const std::uint32_t rgb : colours) made.push_back(ColourOf(rgb));
    return made;
  };
  EXPECT_EQ(Seen(Dib(DibScale(dib, 2, 2))), pixels({0x0F0F10, 0x232324, 0x0F0F0F, 0x232323}));
  EXPECT_EQ(Seen(Dib(DibScale(dib, 8, 1))), pixels({0x0A0A0B, 0x0A0A0B, 0x141415, 0x141415,
                                                    0x1E1E1F, 0x1E1E1F, 0x282829, 0x282829}));
  const Shape shape{4, 9, -3, RandomColours(16, 8)};
  const Bytes nibbles = RandomDib(shape, 4);
  const Dib indexed(nibbles);
  for (const auto& [width, height] : {std::pair(9, 3), {4, 2}, {20, 7}, {1, 1}}) {
    const Bytes scaled = Dib(DibScale(indexed, width, height)).Content();
    EXPECT_EQ(Get(scaled, 14, 2), 4u);
    Pixels nearest;
    for (int i = 0; i < width * height; ++i) {
      nearest.push_back(ModelPixel(shape, nibbles, (2 * (i % width) + 1) * 9 / (2 * width),
                                   (2 * (i / width) + 1) * 3 / (2 * height)));
    }
    EXPECT_EQ(Model({4, width, height}, scaled), nearest);
  }
  EXPECT_FALSE(DibScale(dib, 0, 1));
  EXPECT_FALSE(DibScale(dib, 1, -1));
  EXPECT_FALSE(DibScale(dib, INT_MAX, INT_MAX));
}

TEST(DibFunctions, ColourTables) {
  const Shape shape{4, 5, 2, RandomColours(16, 9)};
  const Bytes bytes = RandomDib(shape, 5);
  const Dib dib(bytes), colours(DibCreate(24, 2, 2)), plane(DibCreate(-8, 2, 2));
  EXPECT_EQ(DibSetUsage(dib, nullptr, 0, 1), 1);
  EXPECT_EQ(Get(dib.Content(), 40 + 2 * 15, 2), 15u);
  EXPECT_EQ(DibSetUsage(dib, shape.colours.data(), 16, 0), 1);
  EXPECT_EQ(dib.Content(), bytes);
  EXPECT_EQ(DibSetUsage(dib, shape.colours.data(), 16, 2), 0);
  EXPECT_EQ(DibSetUsage(dib, nullptr, 16, 0), 0);
  EXPECT_EQ(DibSetUsage(colours, nullptr, 0, 1), 0);

  const Colours palette = {0x000000, 0xFF0000, 0x00FF00, 0x808080, 0x808080};
  Pixels nearest = Model(shape, bytes);
  for (Colour& pixel : nearest) {
    const auto distance = [&pixel](std::uint32_t rgb) {
      const Colour other = ColourOf(rgb);
      int sum = 0;
      for (std::size_t c = 0; c < 3; ++c) sum += (other[c] - pixel[c]) * (other[c] - pixel[c]);
      return sum;
    };
    pixel = ColourOf(*std::min_element(
        palette.begin(), palette.end(),
        [&](std::uint32_t a, std::uint32_t b) { return distance(a) < distance(b); }));
  }
  ASSERT_EQ(DibMapToPalette(dib, palette.data(), 5), 1);
  EXPECT_EQ(Seen(dib), nearest);
  // What lies behind the rows is nobody's.
  Bytes longer = bytes;
  longer.resize(bytes.size() + 8, 0x5A);
  const Dib behind(longer);
  ASSERT_EQ(DibMapToPalette(behind, palette.data(), 2), 1);
  const Bytes kept = behind.Content();
  EXPECT_EQ(Bytes(kept.end() - 8, kept.end()), Bytes(8, 0x5A));
  EXPECT_EQ(DibMapToPalette(dib, palette.data(), 17), 0);
  EXPECT_EQ(DibMapToPalette(colours, palette.data(), 2), 0);
  EXPECT_EQ(DibMapToPalette(plane, palette.data(), 2), 0);
}

TEST(DibFunctions, PaintsWhatLiesWithinTheTarget) {
  const Shape shape{8, 6, 4, RandomColours(256, 10)};
  const Bytes bytes = RandomDib(shape, 6);
  const Dib dib(bytes);
  const Shape maskShape{-8, 6, 4};
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
    const Shape targetShape{24, 10, height};
    const Bytes before = RandomDib(targetShape, 8);
    for (const auto& [to, from] : cases) {
      for (const bool masked : {false, true}) {
        SCOPED_TRACE(testing::Message() << to.x << "," << to.y << " " << masked);
        const Dib target(before);
        const DibTarget on{nullptr, target};
        ASSERT_EQ(
            masked ? DIBDrawWithMask(&on, &to, dib, mask, &from) : DIBPaint(&on, &to, dib, &from),
            1);
        Pixels expected = Model(targetShape, before);
        for (int i = 0; i < 90; ++i) {
          const std::int64_t x = std::int64_t{i % 10} - to.x, y = std::int64_t{i / 10} - to.y;
          if (x < 0 || y < 0 || x >= to.width || y >= to.height) continue;
          const auto nearest = [](int first, int size, std::int64_t at, std::int64_t all) {
            return static_cast<int>(first + (2 * at + 1) * size / (2 * all));
          };
          const int fromX = nearest(from.x, from.width, x, to.width);
          const int fromY = nearest(from.y, from.height, y, to.height);
          const Colour fresh = ModelPixel(shape, bytes, fromX, fromY);
          const int m = masked ? ModelPixel(maskShape, maskBytes, fromX, fromY)[0] : 0;
          for (std::size_t c = 0; c < 3; ++c) {
            std::uint8_t& old = expected[static_cast<std::size_t>(i)][c];
            old = static_cast<std::uint8_t>((fresh[c] * (255 - m) + old * m) / 255);
          }
        }
        ASSERT_EQ(Model(targetShape, target.Content()), expected);
      }
    }
  }
}

TEST(DibFunctions, RefusesToPaint) {
  const Dib dib(RandomDib({8, 6, 4, RandomColours(256, 10)}, 6)), mask(DibCreate(-8, 6, 4));
  const Dib target(DibCreate(24, 5, 5)), eight(DibCreate(8, 5, 5));
  const Dib small(DibCreate(-8, 5, 4)), colours(DibCreate(24, 6, 4)), none(nullptr);
  const DibTarget to{nullptr, target}, nowhere{}, both{target, target}, flat{nullptr, eight};
  const DibRectangle empty{0, 0, 0, 4}, outside{1, 0, 6, 4}, negative{-1, 0, 2, 2};
  const struct {
    const DibTarget* target;
    const DibRectangle *to, *from;
    const Dib& dib;
  } cases[] = {{nullptr, nullptr, nullptr, dib}, {&nowhere, nullptr, nullptr, dib},
               {&both, nullptr, nullptr, dib},   {&flat, nullptr, nullptr, dib},
               {&to, &empty, nullptr, dib},      {&to, nullptr, &empty, dib},
               {&to, nullptr, &outside, dib},    {&to, nullptr, &negative, dib},
               {&to, nullptr, nullptr, none}};
  for (const auto& c : cases) {
    EXPECT_EQ(DIBPaint(c.target, c.to, c.dib, c.from), 0);
    EXPECT_EQ(DIBDrawWithMask(c.target, c.to, c.dib, mask, c.from), 0);
  }
  for (const Dib* bad : {&small, &colours, &none})
    EXPECT_EQ(DIBDrawWithMask(&to, nullptr, dib, *bad, nullptr), 0);
  EXPECT_EQ(DIBPaint(&to, nullptr, target, nullptr), 1) << "a bitmap on itself";
}

#ifdef _WIN32
// What a device shows afterwards is what a bitmap holds.
TEST(DibFunctions, PaintsOnDevices) {
  const Dib dib(RandomDib({8, 6, 4, RandomColours(256, 10)}, 6));
  const Dib mask(RandomDib({-8, 6, 4}, 7));
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
  ASSERT_EQ(ConvertMaskDibToArray(Dib(RandomDib({-8, 5, -2}, 1)), out, 5, 2), 1);
  EXPECT_EQ(back[0][0], RandomDib({-8, 5, -2}, 1).at(40 + 8)) << "the bottom row is stored last";
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
