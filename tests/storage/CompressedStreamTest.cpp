// Compressed streams against zlib itself: every length around the buffers, damaged and cut data.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "storage/BufferedStream.h"
#include "storage/KvZlib.h"
#include "tests/storage/MemoryStream.h"

using namespace test;

namespace {

constexpr std::size_t kLengths[] = {0, 1, 99, 100, 101, 113, 114, 121, 5000, 200001};

std::string WrittenByUs(const std::string& plain, std::size_t piece) {
  MemoryStream target("head");
  target.Seek(0, 2);
  {
    KvZlibWrite writer(&target);
    for (std::size_t at = 0; at < plain.size(); at += piece) {
      const auto count = static_cast<unsigned>(std::min(piece, plain.size() - at));
      EXPECT_EQ(writer.Write(plain.data() + at, count), 0u);
    }
  }
  EXPECT_EQ(target.bytes.substr(0, 4), "head");
  return target.bytes.substr(4);
}

// Reads in pieces until nothing comes, and then once more.
std::string ReadByUs(IKvRead& source, unsigned piece = 7777) {
  KvZlibRead reader(&source);
  std::string result;
  std::vector<char> block(piece);
  while (const unsigned got = reader.Read(block.data(), piece)) result.append(block.data(), got);
  EXPECT_EQ(reader.Read(block.data(), piece), 0u);
  return result;
}

}  // namespace

TEST(CompressedStreams, WriteWhatZlibWrites) {
  for (const std::size_t length : kLengths) {
    const std::string plain = MixedBytes(length);
    EXPECT_EQ(WrittenByUs(plain, 1 << 20), Compressed(plain)) << length;
  }
  EXPECT_EQ(WrittenByUs("", 1).substr(0, 2), "\x78\x9C");
}

TEST(CompressedStreams, ReadWhatZlibWrites) {
  for (const std::size_t length : kLengths) {
    const std::string plain = MixedBytes(length);
    for (const unsigned piece : {1u, 100u, 65536u}) {
      MemoryStream source(Compressed(plain));
      EXPECT_EQ(ReadByUs(source, piece), plain) << length << " in pieces of " << piece;
    }
    MemoryStream small(WrittenByUs(plain, 3));
    EXPECT_EQ(ReadByUs(small), plain) << length;
  }
}

TEST(CompressedStreams, AFaultInTheDataLooksLikeTheirEnd) {
  const std::string plain = MixedBytes(20000);
  const std::string whole = Compressed(plain);
  for (std::size_t cut = 0; cut < whole.size(); cut += 997) {
    MemoryStream source(whole.substr(0, cut));
    const std::string read = ReadByUs(source);
    EXPECT_LT(read.size(), plain.size());
    EXPECT_EQ(read, plain.substr(0, read.size()));
  }
  std::string damaged = whole;
  damaged[whole.size() / 2] = static_cast<char>(~damaged[whole.size() / 2]);
  MemoryStream source(damaged);
  const std::string read = ReadByUs(source);
  EXPECT_EQ(read.substr(0, 1000), plain.substr(0, 1000));
  MemoryStream junk("this is no compressed stream");
  EXPECT_EQ(ReadByUs(junk), "");
}

TEST(CompressedStreams, StopReadingAtTheEndMarker) {
  const std::string whole = Compressed("a picture");
  MemoryStream source(whole + std::string(1000, 'z'));
  EXPECT_EQ(ReadByUs(source), "a picture");
  EXPECT_LT(source.position, whole.size() + 100);
}

TEST(CompressedStreams, PassOnWhatTheInnerStreamThrows) {
  MemoryStream failing;
  failing.callsLeft = 0;
  KvZlibRead reader(&failing);
  char letter;
  EXPECT_THROW(reader.Read(&letter, 1), KvStreamException);
  failing.callsLeft = 0;
  EXPECT_THROW({ KvZlibWrite writer(&failing); }, KvStreamException);
  // One exception at a time: the program would end.
  failing.callsLeft = 0;
  EXPECT_THROW(
      {
        KvZlibWrite writer(&failing);
        throw 1;
      },
      int);
}

// Nothing is read from a block once its Write has ended, however it did.
TEST(CompressedStreams, ForgetABlockThatCouldNotBeWritten) {
  std::string block(400000, '\0');
  std::mt19937 random(3);
  for (char& letter : block) letter = static_cast<char>(random());
  MemoryStream target;
  target.callsLeft = 0;
  {
    KvZlibWrite writer(&target);
    EXPECT_THROW(writer.Write(block.data(), 400000), KvStreamException);
  }
  EXPECT_LT(target.bytes.size(), block.size() / 2);
}

TEST(WholeStreams, WorkAgainAfterAFailure) {
  MemoryStream plain("text"), packed, unpacked;
  KvZlib zlib;
  packed.callsLeft = 0;
  EXPECT_THROW(zlib.Compress(&plain, &packed, 0), KvStreamException);
  plain.Seek(0, 0);
  EXPECT_EQ(zlib.Compress(&plain, &packed, 0), 4u);
  packed.callsLeft = 0;
  packed.Seek(0, 0);
  EXPECT_THROW(zlib.Decompress(&unpacked, &packed, 0), KvStreamException);
  EXPECT_EQ(zlib.Decompress(&unpacked, &packed, 0), 4u);
  EXPECT_EQ(unpacked.bytes, "text");
}

TEST(WholeStreams, KeepTheLimit) {
  const std::string plain = MixedBytes(1000);
  KvZlib zlib;
  for (const unsigned limit : {0u, 1u, 100u, 101u, 999u, 1000u, 5000u}) {
    const std::size_t moved = limit == 0 ? plain.size() : std::min<std::size_t>(limit, 1000);
    MemoryStream source(plain), packed, unpacked, part;
    EXPECT_EQ(zlib.Compress(&source, &packed, limit), moved);
    const bool readsOn = limit == 0 || limit > 1000;  // 100 bytes at a time
    EXPECT_EQ(source.reads, static_cast<int>(moved + 99) / 100 + readsOn);
    packed.Seek(0, 0);
    EXPECT_EQ(zlib.Decompress(&unpacked, &packed, 0), moved);
    EXPECT_EQ(unpacked.bytes, plain.substr(0, moved));
    MemoryStream all(Compressed(plain));
    EXPECT_EQ(zlib.Decompress(&part, &all, limit), moved);
    EXPECT_EQ(part.bytes, plain.substr(0, moved));
  }
}

TEST(BufferedStreams, EndWithTheLengthOfAStreamThatFails) {
  MemoryStream source(std::string(3 * 65536 + 2, 'a'));
  source.Seek(1, 0);
  source.endlessZeros = true;
  BufferedReader reader(source);
  std::string block(1 << 18, 'b');
  EXPECT_EQ(reader.Read(block.data(), 1 << 18), 3 * 65536u + 1);
}

TEST(BufferedStreams, WriteInLargePiecesAndTellOfAFullDisk) {
  const std::string plain = MixedBytes(3 * 65536 + 1);
  MemoryStream target;
  BufferedWriter writer(target);
  for (std::size_t at = 0; at < plain.size(); at += 101) {
    writer.Write(plain.data() + at,
                 static_cast<unsigned>(std::min<std::size_t>(101, plain.size() - at)));
  }
  EXPECT_TRUE(writer.Flush());
  EXPECT_EQ(target.bytes, plain);
  EXPECT_LE(target.writes, 4);
  EXPECT_EQ(writer.Count(), plain.size());

  MemoryStream full;
  full.capacity = 70000;
  BufferedWriter failing(full);
  failing.Write(plain.data(), 65536);
  EXPECT_EQ(failing.Write(plain.data(), 65536), 0u);
  EXPECT_FALSE(failing.Flush());
}
