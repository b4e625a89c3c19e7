// Pictures as serialised streams: round trips, the bytes, and streams of which something is wrong.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "picture/MemoryPicture.h"
#include "storage/KvZlib.h"

namespace {

using Bytes = std::vector<BYTE>;

// A stream in memory that gives at most `most` bytes at a time, and may fail.
class MemoryStream final : public IKvRead, public IKvWrite {
 public:
  MemoryStream() = default;
  explicit MemoryStream(Bytes content, unsigned mostAtOnce = 7)
      : bytes(std::move(content)), most(mostAtOnce) {}

  unsigned Read(void* buffer, unsigned count) override {
    const auto left = static_cast<unsigned>(bytes.size() - position);
    const unsigned given = std::min({count, most, left});
    if (given > 0) std::memcpy(buffer, bytes.data() + position, given);
    position += given;
    return given;
  }
  unsigned Write(const void* buffer, unsigned count) override {
    if (throws) throw KvStreamException(-6, "Zlib-Fehler");
    const auto* first = static_cast<const BYTE*>(buffer);
    bytes.insert(bytes.end(), first, first + count);
    return 0;
  }

  Bytes bytes;
  std::size_t position = 0;
  unsigned most = 7;
  bool throws = false;
};

void Put32(Bytes& bytes, std::uint32_t value) {
  for (int shift = 0; shift < 32; shift += 8) bytes.push_back(static_cast<BYTE>(value >> shift));
}

std::uint32_t Get32(const Bytes& bytes, std::size_t at) {
  std::uint32_t value;
  std::memcpy(&value, &bytes.at(at), sizeof value);
  return value;
}

Bytes BlockOf(const MemoryPicture& picture, std::size_t bytes) {
  Bytes block(picture.Block(), picture.Block() + bytes);
  std::fill(block.begin() + 8, block.begin() + 12, BYTE{0});  // has no meaning
  return block;
}

void Paint(MemoryPicture& picture) {
  for (int y = 0; y < picture.Height(); ++y) {
    for (int x = 0; x < 3 * picture.Width() && picture.ColourRows(); ++x) {
      picture.ColourRows()[y][x] = static_cast<BYTE>(11 * y + 7 * x);
    }
    for (int x = 0; x < picture.Width() && picture.MaskRows(); ++x) {
      picture.MaskRows()[y][x] = static_cast<BYTE>(5 * y + x);
    }
  }
}

// The stream of a block, whatever is in it.
Bytes StreamOf(const Bytes& block, std::uint32_t total, std::uint32_t zero = 0) {
  MemoryStream stream;
  Put32(stream.bytes, zero);
  Put32(stream.bytes, total);
  KvZlibWrite compressed(&stream);
  compressed.Write(block.data() + 8, static_cast<unsigned>(block.size() - 8));
  return stream.bytes;  // without what the destructor writes
}

Bytes WholeStreamOf(const Bytes& block, std::uint32_t total) {
  MemoryStream stream;
  Put32(stream.bytes, 0);
  Put32(stream.bytes, total);
  {
    KvZlibWrite compressed(&stream);
    compressed.Write(block.data() + 8, static_cast<unsigned>(block.size() - 8));
  }
  return stream.bytes;
}

TEST(PictureStream, RoundTrips) {
  struct Case {
    int width, height;
    bool image, mask;
    std::size_t bytes;
  };
  for (const Case& c : {Case{3, 2, true, true, 36 + 64 + 48}, Case{1, 1, true, false, 36 + 44},
                        Case{5, 3, false, true, 36 + 64}, Case{5, 3, false, false, 36},
                        Case{301, 200, true, true, 36 + 40 + 904 * 200 + 40 + 304 * 200}}) {
    SCOPED_TRACE(std::to_string(c.width) + "x" + std::to_string(c.height));
    MemoryPicture picture("", c.width, c.height, c.image, c.mask);
    Paint(picture);
    MemoryStream stream;
    ASSERT_TRUE(picture.Serialize(&stream));
    EXPECT_EQ(Get32(stream.bytes, 0), 0u);
    EXPECT_EQ(Get32(stream.bytes, 4), c.bytes);
    EXPECT_EQ(stream.bytes.at(8), 0x78);
    EXPECT_EQ(stream.bytes.at(9), 0x9C);
    const MemoryPicture read(&stream);
    EXPECT_EQ(read.IsValid(), picture.IsValid());
    ASSERT_TRUE(read.Block());
    EXPECT_EQ(BlockOf(read, c.bytes), BlockOf(picture, c.bytes));
    EXPECT_EQ(read.Width(), picture.Width());
    EXPECT_EQ(read.MaskRows() != nullptr, c.mask);
  }
}

// The block of a picture made of bitmaps states another size than it has.
TEST(PictureStream, WritesTheSizeOfTheBlock) {
  const MemoryPicture blank("", 9, 4, true, true);
  const MemoryPicture copy("", blank.Image(), blank.Mask(), 30, 40, 10, 20);
  constexpr std::size_t kBytes = 36 + 40 + 28 * 4 + 40 + 12 * 4;
  MemoryStream stream;
  ASSERT_TRUE(copy.Serialize(&stream));
  EXPECT_EQ(Get32(stream.bytes, 4), kBytes);
  const MemoryPicture read(&stream);
  ASSERT_TRUE(read.IsValid());
  for (int i = 1; i <= 4; ++i) EXPECT_EQ(read.Value(i), 10 * i);
}

TEST(PictureStream, WhatIsBrokenIsNoPicture) {
  constexpr std::uint32_t kBytes = 36 + 64 + 48;
  const MemoryPicture picture("", 3, 2, true, true);
  const Bytes block = BlockOf(picture, kBytes);
  const auto with = [&block](std::size_t at, std::uint32_t value) {
    Bytes changed = block;
    std::memcpy(&changed[at], &value, sizeof value);
    return changed;
  };
  Bytes longer = block;
  longer.resize(kBytes + 4);
  const struct {
    const char* name;
    Bytes stream;
  } cases[] = {{"first field", StreamOf(block, kBytes, 1)},
               {"total of 35", WholeStreamOf(block, 35)},
               {"total too small", WholeStreamOf(block, kBytes - 4)},
               {"total too large", WholeStreamOf(block, kBytes + 4)},
               {"total far too large", WholeStreamOf(block, 0x7FFFFFFF)},
               {"total beyond 2^31", WholeStreamOf(block, 0xFFFFFFFF)},
               {"bytes that belong to nothing", WholeStreamOf(longer, kBytes + 4)},
               {"image size", WholeStreamOf(with(28, 60), kBytes)},
               {"image size beyond the block", WholeStreamOf(with(28, 0xFFFFFFF0), kBytes)},
               {"head of the image", WholeStreamOf(with(32, 12), kBytes)},
               {"width", WholeStreamOf(with(36, 0x7FFFFFFF), kBytes)},
               {"height", WholeStreamOf(with(40, 0x80000000), kBytes)},
               {"mask size", WholeStreamOf(with(32 + 64, 47), kBytes)},
               {"mask size of 0", WholeStreamOf(with(32 + 64, 0), kBytes)}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    MemoryStream stream(c.stream, 1000);
    const MemoryPicture read(&stream);
    EXPECT_FALSE(read.IsValid());
    EXPECT_EQ(read.Block(), nullptr);
  }
  MemoryStream foreign(StreamOf(block, kBytes, 7));
  const MemoryPicture read(&foreign);
  EXPECT_EQ(foreign.position, 4u) << "nothing is read behind a first field that is not 0";
  EXPECT_FALSE(MemoryPicture(static_cast<IKvRead*>(nullptr)).IsValid());
}

TEST(PictureStream, EveryCutStreamIsNoPicture) {
  MemoryPicture picture("", 40, 30, true, true);
  Paint(picture);
  MemoryStream whole;
  ASSERT_TRUE(picture.Serialize(&whole));
  // The last bytes end the compressed stream and are not needed for the picture.
  for (std::size_t cut = 0; cut + 10 < whole.bytes.size(); ++cut) {
    MemoryStream stream(
        Bytes(whole.bytes.begin(), whole.bytes.begin() + static_cast<std::ptrdiff_t>(cut)));
    EXPECT_FALSE(MemoryPicture(&stream).IsValid()) << cut;
  }
}

TEST(PictureStream, FailuresAreTold) {
  const MemoryPicture picture("", 3, 2, true, true);
  MemoryStream failing;
  failing.throws = true;
  EXPECT_FALSE(picture.Serialize(&failing));
  EXPECT_FALSE(picture.Serialize(nullptr));
  MemoryStream stream;
  EXPECT_FALSE(MemoryPicture("", 65536, 32768, true, true).Serialize(&stream));
  EXPECT_TRUE(stream.bytes.empty());
}

}  // namespace
