// Work pictures: their blocks to the byte, their serialised form, and blocks of which something is
// wrong, as a stream brings them and as another process shares them.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>
#include <vector>

#include "picture/SharedPicture.h"
#include "tests/picture/Sharer.h"
#include "tests/storage/MemoryStream.h"

namespace {

using test::Compressed;
using test::Longs;
using test::MemoryStream;

std::uint32_t Get32(const BYTE* at) {
  return at[0] | std::uint32_t{at[1]} << 8 | std::uint32_t{at[2]} << 16 |
         std::uint32_t{at[3]} << 24;
}

const BYTE* Data(const std::string& bytes) {
  return reinterpret_cast<const BYTE*>(bytes.data());
}

// A packed bitmap, written out byte by byte; pixel byte k is k + seed.
std::string Dib(int bits, int width, int height, int colours, int stride, int seed) {
  std::string dib = Longs({40, width, height, 1 | (bits & 0xFFFF) << 16, 0, 0, 0, 0, colours, 0});
  for (int i = 0; i < colours; ++i) dib += Longs({i * 0x10101});
  const int rows = height < 0 ? -height : height;
  for (int k = 0; k < stride * rows; ++k) dib += static_cast<char>(k + seed);
  return dib;
}

// The block but for what stands at 8, which has no meaning.
std::string BlockOf(const MemoryPicture& picture) {
  const std::uint32_t image = Get32(picture.Block() + 28);
  std::string block(picture.Block(),
                    picture.Block() + 36 + image + Get32(picture.Block() + 32 + image));
  return block.replace(8, 4, 4, '\0');
}

void Paint(const MemoryPicture& picture) {
  BYTE level = 0;
  const auto paint = [&](BYTE** rows, int bytes) {
    for (int y = 0; rows && y < picture.Height(); ++y) {
      for (int x = 0; x < bytes; ++x) rows[y][x] = level += 7;
    }
  };
  paint(picture.ColourRows(), 3 * picture.Width());
  paint(picture.MaskRows(), picture.Width());
}

// Through a stream that gives little at a time. It tells the size that the block has.
void ExpectComesBack(const MemoryPicture& picture) {
  const std::string block = BlockOf(picture);
  MemoryStream stream;
  ASSERT_TRUE(picture.Serialize(&stream));
  EXPECT_EQ(stream.bytes.substr(0, 10),
            Longs({0, static_cast<std::int64_t>(block.size())}) + "\x78\x9C");
  stream.Seek(0, 0);
  stream.most = 3;
  const MemoryPicture read(&stream);
  ASSERT_TRUE(read.Block());
  EXPECT_EQ(read.IsValid(), picture.IsValid());
  EXPECT_EQ(BlockOf(read).substr(12), block.substr(12));
  EXPECT_EQ(Get32(read.Block() + 4), block.size());
  EXPECT_EQ(read.MaskRows() != nullptr, picture.MaskRows() != nullptr);
  for (int i = 1; i <= 4; ++i) EXPECT_EQ(read.Value(i), picture.Value(i));
}

TEST(MemoryPicture, BlankPictureToTheByte) {
  const MemoryPicture picture("any name", 3, 2, true, true);
  ASSERT_TRUE(picture.IsValid());
  constexpr int kImage = 40 + 12 * 2;
  constexpr int kMask = 40 + 4 * 2;
  EXPECT_EQ(BlockOf(picture), Longs({0, 36 + kImage + kMask, 0, 0, 0, 3, 3, kImage, 40, 3, 2,
                                     1 | 24 << 16, 0, 24, 0, 0, 0, 0}) +
                                  std::string(24, '\0') +
                                  Longs({kMask, 40, 3, 2, 1 | 0xFFF8LL << 16, 0, 8, 0, 0, 0, 0}) +
                                  std::string(8, '\xFF'));
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
        Case{301, 200, true, true, 301, 200, 36 + 40 + 904 * 200 + 40 + 304 * 200},
        Case{5, 3, false, false, 0, 0, 36}, Case{INT_MAX, INT_MAX, true, true, 0, 0, 0},
        Case{INT_MAX, 1, true, true, 0, 0, 0}, Case{65536, 32768, true, true, 0, 0, 0},
        Case{24000, 28000, true, true, 0, 0, 0}}) {
    SCOPED_TRACE(std::to_string(c.width) + "x" + std::to_string(c.height));
    MemoryPicture picture("", c.width, c.height, c.image, c.mask);
    EXPECT_EQ(picture.IsValid(), c.builtWidth != 0);
    EXPECT_EQ(picture.Width(), c.builtWidth);
    EXPECT_EQ(picture.Height(), c.builtHeight);
    EXPECT_EQ(picture.ColourRows() != nullptr, c.image && c.total);
    EXPECT_EQ(picture.MaskRows() != nullptr, c.mask && c.total);
    ASSERT_EQ(picture.Block() != nullptr, c.total != 0);
    MemoryStream nothing;
    if (!c.total) {
      picture.Clear();
      EXPECT_FALSE(picture.Serialize(&nothing));
      EXPECT_EQ(nothing.bytes, "");
      continue;
    }
    EXPECT_EQ(Get32(picture.Block() + 4), c.total);
    EXPECT_EQ(BlockOf(picture).size(), c.total);
    EXPECT_EQ(Get32(picture.Block() + 28) != 0, c.image);
    const std::string blank = BlockOf(picture);
    Paint(picture);
    ExpectComesBack(picture);
    EXPECT_EQ(BlockOf(picture) == blank, c.builtWidth == 0);
    picture.Clear();
    EXPECT_EQ(BlockOf(picture), blank) << "the heads stay";
  }
}

TEST(MemoryPicture, CopiesPackedBitmaps) {
  struct Case {
    const char* name;
    std::string image, mask;
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
    const MemoryPicture picture("", Data(c.image), c.mask.empty() ? nullptr : Data(c.mask), 33, 44,
                                11, 22);
    ASSERT_TRUE(picture.IsValid());
    EXPECT_EQ(std::pair(picture.Width(), picture.Height()), std::pair(c.width, c.height));
    for (int i = 1; i <= 4; ++i) EXPECT_EQ(picture.Value(i), 11 * i);
    EXPECT_EQ(BlockOf(picture),
              Longs({0, c.stated, 0, 11, 22, 33, 44, static_cast<int>(c.image.size())}) + c.image +
                  Longs({static_cast<int>(c.mask.size())}) + c.mask);
    EXPECT_EQ(picture.ColourRows()[0], picture.Image() + c.firstColour);
    const auto rows = static_cast<std::size_t>(c.height);
    EXPECT_EQ(picture.ColourRows()[rows - 1],
              picture.Image() + c.image.size() - (c.image.size() - c.firstColour) / rows);
    ASSERT_EQ(picture.Mask() != nullptr, !c.mask.empty());
    if (picture.Mask()) {
      EXPECT_EQ(picture.MaskRows()[0], picture.Mask() + c.firstMask);
    }
    ExpectComesBack(picture);
  }
}

TEST(MemoryPicture, RefusesBitmapsThatCannotBe) {
  const std::string good = Dib(24, 2, 2, 0, 8, 0);
  std::string otherHeader = good;
  otherHeader[0] = 12;
  // Sizes whose bytes nobody could hold are refused before any is read.
  for (const std::string& bad :
       {Dib(24, 0, 2, 0, 0, 0), Dib(24, -2, 2, 0, 0, 0), Dib(24, 2, 0, 0, 0, 0), otherHeader,
        Dib(24, INT_MAX, INT_MAX, 0, 0, 0), Dib(24, 2, INT_MIN + 1, 0, 0, 0),
        Dib(24, 1 << 29, 2, 0, 0, 0)}) {
    EXPECT_FALSE(MemoryPicture("", Data(bad), nullptr, 0, 0, 0, 0).IsValid());
    EXPECT_FALSE(MemoryPicture("", Data(good), Data(bad), 0, 0, 0, 0).IsValid());
  }
}

// --- blocks of others

void ExpectNoPicture(std::int64_t zero, std::int64_t total, const std::string& block) {
  MemoryStream stream(Longs({zero, total}) + Compressed(block.substr(8)));
  const MemoryPicture read(&stream);
  EXPECT_FALSE(read.IsValid());
  EXPECT_EQ(read.Block(), nullptr);
  if (zero != 0) {
    EXPECT_EQ(stream.position, 4u) << "nothing is read behind a first field that is not 0";
  }
}

// What lies in the block may come from anybody: by a stream or by the id of a heap.
TEST(BrokenPictures, AreNone) {
  constexpr std::int64_t kBytes = 36 + 88 + 64;
  const struct {
    const char* name;
    std::size_t at;  // in the block of a picture of 5 by 3 with mask
    std::int64_t field;
  } cases[] = {{"image size", 28, 89},
               {"image size beyond the block", 28, 0xFFFFFFF0},
               {"image size far beyond the block", 28, 1 << 30},
               {"head", 32, 12},
               {"width", 36, 6},
               {"huge width", 36, 0x7FFFFFFF},
               {"no rows", 40, 0},
               {"too many rows", 40, 0x80000000},
               {"bits", 46, 32},
               {"mask size", 32 + 88, 63},
               {"mask size beyond the block", 32 + 88, 0xFFFFFFF0},
               {"mask rows", 36 + 88 + 8, 1 << 20}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const std::string id = FreshId();
    const SharedPicture first(id.c_str(), "", 5, 3, true, true);
    ASSERT_TRUE(first.IsValid());
    const std::string field = Longs({c.field});
    ExpectNoPicture(0, kBytes, BlockOf(first).replace(c.at, 4, field));
    std::memcpy(first.Block() + c.at, field.data(), 4);
    EXPECT_FALSE(SharedPicture(id.c_str()).IsValid());
    EXPECT_FALSE(SharedPicture(id.c_str(), "", 5, 3, true, true).IsValid());
  }
  const std::string block = BlockOf(MemoryPicture("", 5, 3, true, true));
  ExpectNoPicture(1, kBytes, block);
  for (const std::int64_t total : {std::int64_t{35}, kBytes - 4, kBytes + 4,
                                   std::int64_t{0x7FFFFFFF}, std::int64_t{0xFFFFFFFF}}) {
    SCOPED_TRACE(total);
    ExpectNoPicture(0, total, block);
  }
  ExpectNoPicture(0, kBytes + 4, block + "1234");
  ExpectNoPicture(0, kBytes, std::string(block).replace(32 + 88, 4, 4, '\0'));  // mask size 0
  EXPECT_FALSE(MemoryPicture(static_cast<IKvRead*>(nullptr)).IsValid());
}

TEST(BrokenPictures, StreamsThatAreCutOrFail) {
  const MemoryPicture picture("", 40, 30, true, true);
  Paint(picture);
  MemoryStream whole;
  ASSERT_TRUE(picture.Serialize(&whole));
  // The last bytes end the compressed stream and are not needed for the picture.
  for (std::size_t cut = 0; cut + 10 < whole.bytes.size(); ++cut) {
    MemoryStream stream(whole.bytes.substr(0, cut));
    EXPECT_FALSE(MemoryPicture(&stream).IsValid()) << cut;
  }
  for (int call = 0; call < 3; ++call) {
    MemoryStream failing;
    failing.callsLeft = call;
    EXPECT_EQ(picture.Serialize(&failing), call >= whole.writes) << call;
  }
  EXPECT_FALSE(picture.Serialize(nullptr));
}

}  // namespace
