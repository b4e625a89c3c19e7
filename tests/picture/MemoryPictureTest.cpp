#include "picture/MemoryPicture.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<BYTE>;

void Put32(Bytes& bytes, std::int64_t value) {
  for (int shift = 0; shift < 32; shift += 8) {
    bytes.push_back(static_cast<BYTE>(static_cast<std::uint64_t>(value) >> shift));
  }
}

std::uint32_t Get32(const BYTE* at) {
  return at[0] | std::uint32_t{at[1]} << 8 | std::uint32_t{at[2]} << 16 |
         std::uint32_t{at[3]} << 24;
}

// A packed bitmap, written out byte by byte; pixel byte k is k + seed.
Bytes Dib(int bits, int width, int height, int colours, int stride, int seed) {
  Bytes dib;
  for (const std::int64_t field :
       {40, width, height, 1 | (bits & 0xFFFF) << 16, 0, 0, 0, 0, colours, 0}) {
    Put32(dib, field);
  }
  for (int i = 0; i < colours; ++i) Put32(dib, i * 0x10101);
  const int rows = height < 0 ? -height : height;
  for (int k = 0; k < stride * rows; ++k) dib.push_back(static_cast<BYTE>(k + seed));
  return dib;
}

TEST(MemoryPicture, BlankPictureToTheByte) {
  const MemoryPicture picture("any name", 3, 2, true, true);
  ASSERT_TRUE(picture.IsValid());
  Bytes expected;
  constexpr int kImage = 40 + 12 * 2;
  constexpr int kMask = 40 + 4 * 2;
  for (const int field : {0, 36 + kImage + kMask, 0, 0, 0, 3, 3, kImage}) Put32(expected, field);
  for (const int field : {40, 3, 2, 1 | 24 << 16, 0, 24, 0, 0, 0, 0}) Put32(expected, field);
  expected.insert(expected.end(), 24, 0);
  Put32(expected, kMask);
  for (const std::int64_t field :
       {40LL, 3LL, 2LL, 1LL | 0xFFF8LL << 16, 0LL, 8LL, 0LL, 0LL, 0LL, 0LL}) {
    Put32(expected, field);
  }
  expected.insert(expected.end(), 8, 255);
  Bytes actual(picture.Block(), picture.Block() + expected.size());
  // What stands at 8 has no meaning.
  for (std::size_t i = 8; i < 12; ++i) actual.at(i) = 0;
  EXPECT_EQ(actual, expected);

  EXPECT_EQ(picture.ColourRows()[0], picture.Block() + 72);
  EXPECT_EQ(picture.ColourRows()[1], picture.Block() + 84);
  EXPECT_EQ(picture.Mask(), picture.Block() + 36 + kImage);
  EXPECT_EQ(picture.MaskRows()[1], picture.Mask() + 44);
}

TEST(MemoryPicture, SizesAndPlanes) {
  struct Case {
    int width, height;
    bool image, mask;
    int builtWidth, builtHeight;  // 0: not valid
    std::uint32_t total;          // 0: no block
  };
  for (const Case& c :
       {Case{0, 0, true, true, 1, 1, 36 + 44 + 44}, Case{-7, 5, true, false, 1, 5, 36 + 40 + 20},
        Case{5, INT_MIN, true, false, 5, 1, 36 + 40 + 16},
        Case{5, 3, true, true, 5, 3, 36 + 88 + 64}, Case{5, 3, false, true, 0, 0, 36 + 64},
        Case{5, 3, false, false, 0, 0, 36}, Case{INT_MAX, INT_MAX, true, true, 0, 0, 0},
        Case{INT_MAX, 1, true, true, 0, 0, 0}, Case{65536, 32768, true, true, 0, 0, 0},
        Case{24000, 28000, true, true, 0, 0, 0}}) {
    SCOPED_TRACE(std::to_string(c.width) + "x" + std::to_string(c.height));
    MemoryPicture picture("", c.width, c.height, c.image, c.mask);
    picture.Clear();
    EXPECT_EQ(picture.IsValid(), c.builtWidth != 0);
    EXPECT_EQ(picture.Width(), c.builtWidth);
    EXPECT_EQ(picture.Height(), c.builtHeight);
    EXPECT_EQ(picture.ColourRows() != nullptr, c.image && c.total);
    EXPECT_EQ(picture.MaskRows() != nullptr, c.mask && c.total);
    ASSERT_EQ(picture.Block() != nullptr, c.total != 0);
    if (!c.total) continue;
    EXPECT_EQ(Get32(picture.Block() + 4), c.total);
    const std::uint32_t imageBytes = Get32(picture.Block() + 28);
    EXPECT_EQ(imageBytes != 0, c.image);
    EXPECT_EQ(Get32(picture.Block() + 32 + imageBytes) != 0, c.mask);
  }
}

TEST(MemoryPicture, ClearLeavesHeadersAlone) {
  MemoryPicture picture("", 3, 2, true, true);
  const Bytes blank(picture.Block(), picture.Block() + Get32(picture.Block() + 4));
  std::memset(picture.ColourRows()[0], 7, 24);
  std::memset(picture.MaskRows()[0], 7, 8);
  picture.Clear();
  EXPECT_EQ(Bytes(picture.Block(), picture.Block() + blank.size()), blank);
}

TEST(MemoryPicture, CopiesPackedBitmaps) {
  struct Case {
    const char* name;
    Bytes image, mask;
    int width, height;
    std::size_t firstColour, firstMask;  // offsets of row 0 in their bitmaps
    std::uint32_t stated;                // the height counts as the width
  };
  const Case cases[] = {
      {"both", Dib(24, 3, 2, 0, 12, 1), Dib(-8, 3, 2, 0, 4, 9), 3, 2, 40, 40, 36 + 76 + 52},
      {"top-down", Dib(24, 2, -3, 0, 8, 1), {}, 2, 3, 40, 0, 36 + 56},
      {"mask with colour table", Dib(24, 5, 1, 0, 16, 1), Dib(8, 5, 1, 256, 8, 9), 5, 1, 40, 1064,
       36 + 120 + 1104},
      {"8 bits", Dib(8, 4, 9, 256, 4, 3), {}, 4, 9, 1064, 0, 36 + 1064 + 16}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const MemoryPicture picture("", c.image.data(), c.mask.empty() ? nullptr : c.mask.data(), 33,
                                44, 11, 22);
    ASSERT_TRUE(picture.IsValid());
    EXPECT_EQ(picture.Width(), c.width);
    EXPECT_EQ(picture.Height(), c.height);
    for (int i = 1; i <= 4; ++i) {
      EXPECT_EQ(picture.Value(i), 11 * i);
      EXPECT_EQ(Get32(picture.Block() + 8 + 4 * i), static_cast<unsigned>(11 * i));
    }
    EXPECT_EQ(Get32(picture.Block() + 4), c.stated);
    ASSERT_EQ(Get32(picture.Block() + 28), c.image.size());
    EXPECT_EQ(Bytes(picture.Image(), picture.Image() + c.image.size()), c.image);
    EXPECT_EQ(picture.ColourRows()[0], picture.Image() + c.firstColour);
    const auto rows = static_cast<std::size_t>(c.height);
    EXPECT_EQ(picture.ColourRows()[rows - 1],
              picture.Image() + c.image.size() - (c.image.size() - c.firstColour) / rows);
    ASSERT_EQ(Get32(picture.Block() + 32 + c.image.size()), c.mask.size());
    EXPECT_EQ(picture.Mask() != nullptr, !c.mask.empty());
    if (c.mask.empty()) continue;
    EXPECT_EQ(Bytes(picture.Mask(), picture.Mask() + c.mask.size()), c.mask);
    EXPECT_EQ(picture.MaskRows()[0], picture.Mask() + c.firstMask);
  }
}

TEST(MemoryPicture, RefusesBitmapsThatCannotBe) {
  const Bytes good = Dib(24, 2, 2, 0, 8, 0);
  Bytes otherHeader = good;
  otherHeader[0] = 12;
  for (const Bytes& bad :
       {Dib(24, 0, 2, 0, 0, 0), Dib(24, -2, 2, 0, 0, 0), Dib(24, 2, 0, 0, 0, 0), otherHeader}) {
    EXPECT_FALSE(MemoryPicture("", bad.data(), nullptr, 0, 0, 0, 0).IsValid());
    EXPECT_FALSE(MemoryPicture("", good.data(), bad.data(), 0, 0, 0, 0).IsValid());
  }
  // Sizes whose bytes nobody could hold are refused before any is read.
  for (const auto& [width, height] : {std::pair(INT_MAX, INT_MAX), {2, INT_MIN}, {1 << 29, 2}}) {
    Bytes huge;
    for (const std::int64_t field : {40, width, height, 1 | 24 << 16, 0, 0, 0, 0, 0, 0})
      Put32(huge, field);
    EXPECT_FALSE(MemoryPicture("", huge.data(), nullptr, 0, 0, 0, 0).IsValid());
  }
}

}  // namespace
