// The serialised form of a picture: 0 and the size of its block as they are, then the block from 8
// on, compressed.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "picture/MemoryPicture.h"
#include "storage/KvZlib.h"

namespace {

using Field = std::uint32_t;
constexpr std::size_t kPlainBytes = 2 * sizeof(Field);
constexpr std::size_t kLeastBlock = 36;
constexpr std::size_t kMostBlock = 0x7FFFFFFF;

struct Freed {
  void operator()(BYTE* block) const { std::free(block); }
};
using OwnedBlock = std::unique_ptr<BYTE, Freed>;

// Streams may give less than is wanted; the end is where they give nothing.
std::size_t ReadAll(IKvRead& from, BYTE* to, std::size_t count) {
  std::size_t done = 0;
  while (done < count) {
    const unsigned got = from.Read(to + done, static_cast<unsigned>(count - done));
    if (got == 0 || got > count - done) break;
    done += got;
  }
  return done;
}

bool Grow(OwnedBlock& block, std::size_t bytes) {
  auto* const grown = static_cast<BYTE*>(std::realloc(block.get(), bytes));
  if (!grown) return false;
  static_cast<void>(block.release());
  block.reset(grown);
  return true;
}

// A block of this size, which grows with the data that arrive and not with what was stated. Null
// when they end early.
OwnedBlock ReadBlock(IKvRead& from, std::size_t total) {
  constexpr std::size_t kFirstBytes = 1 << 16;
  OwnedBlock block;
  std::size_t room = 0;
  std::size_t done = kPlainBytes;
  while (done < total) {
    room = std::min(total, std::max(kFirstBytes, 2 * room));
    if (!Grow(block, room)) return nullptr;
    done += ReadAll(from, block.get() + done, room - done);
    if (done < room) return nullptr;
  }
  const Field plain[2] = {0, static_cast<Field>(total)};
  std::memcpy(block.get(), plain, sizeof plain);
  return block;
}

// Null when the stream holds something else.
OwnedBlock ReadPicture(IKvRead* stream) {
  Field zero = 1;
  Field total = 0;
  if (!stream || ReadAll(*stream, reinterpret_cast<BYTE*>(&zero), sizeof zero) != sizeof zero ||
      zero != 0 ||
      ReadAll(*stream, reinterpret_cast<BYTE*>(&total), sizeof total) != sizeof total ||
      total < kLeastBlock || total > kMostBlock) {
    return nullptr;
  }
  KvZlibRead compressed(stream);
  return ReadBlock(compressed, total);
}

std::size_t TotalOf(const BYTE* block) {
  Field total;
  std::memcpy(&total, block + sizeof(Field), sizeof total);
  return total;
}

}  // namespace

MemoryPicture::MemoryPicture(IKvRead* stream) {
  try {
    OwnedBlock read = ReadPicture(stream);
    const std::size_t total = read ? TotalOf(read.get()) : 0;
    if (PictureBytes(read.get(), total) == total) Attach(read.release());
  } catch (...) {
    Attach(nullptr);
  }
}

bool MemoryPicture::Serialize(IKvWrite* stream) const {
  if (!block || !stream) return false;
  try {
    const std::size_t total = BlockBytes();
    const Field plain[2] = {0, static_cast<Field>(total)};
    const Field unwritten = 0;
    stream->Write(plain, sizeof plain);
    KvZlibWrite compressed(stream);
    compressed.Write(&unwritten, sizeof unwritten);
    constexpr std::size_t kValuesAt = 12;
    compressed.Write(block + kValuesAt, static_cast<unsigned>(total - kValuesAt));
    return true;
  } catch (...) {
    return false;
  }
}
