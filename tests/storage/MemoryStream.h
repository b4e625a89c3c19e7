// A stream over bytes in memory, with a place for every fault that a stream can have, and the bytes
// that stored pictures are made of.
#pragma once

#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <random>
#include <string>

#include "storage/KvErrors.h"

namespace test {

// Close leaves the object, which belongs to the test.
class MemoryStream final : public IKvStream {
 public:
  explicit MemoryStream(std::string start = {}) : bytes(std::move(start)) {}

  unsigned Read(void* buffer, unsigned count) override {
    Call();
    ++reads;
    if (endlessZeros) {
      std::memset(buffer, 0, count);
      return count;
    }
    const auto got =
        static_cast<unsigned>(std::min<std::size_t>({count, most, bytes.size() - position}));
    std::memcpy(buffer, bytes.data() + position, got);
    position += got;
    return got;
  }
  unsigned Write(const void* buffer, unsigned count) override {
    Call();
    ++writes;
    const auto room = static_cast<unsigned>(std::min<std::size_t>(count, capacity - position));
    if (bytes.size() < position + room) bytes.resize(position + room);
    std::memcpy(bytes.data() + position, buffer, room);
    position += room;
    return room;
  }
  unsigned GetLength() override { return static_cast<unsigned>(bytes.size()); }
  unsigned GetPosition() override { return static_cast<unsigned>(position); }
  long Seek(long offset, int origin) override {
    const std::size_t from = origin == 0 ? 0 : origin == 1 ? position : bytes.size();
    position = from + static_cast<std::size_t>(offset);
    return static_cast<long>(position);
  }
  int LockRange(unsigned, unsigned) override { return 0; }
  int UnlockRange(unsigned, unsigned) override { return 0; }
  void Close() override {}
  void SetLength(unsigned length) override { bytes.resize(length); }
  KvFile* GetFile() override { return nullptr; }

  std::string bytes;
  std::size_t position = 0;
  std::size_t capacity = std::size_t{1} << 30;
  std::size_t most = capacity;  // that it gives at a time
  int callsLeft = 1 << 30;      // of Read and Write, until one throws
  bool endlessZeros = false;
  int reads = 0;
  int writes = 0;

 private:
  void Call() {
    if (callsLeft-- == 0) throw KvStreamException(-99, "disk");
  }
};

// Half of it repeats, so that it compresses.
inline std::string MixedBytes(std::size_t size, unsigned seed = 1) {
  std::mt19937 random(seed);
  std::string bytes(size, 'x');
  for (std::size_t i = 0; i < size; i += 2) bytes[i] = static_cast<char>(random() % 64);
  return bytes;
}

// Numbers of four bytes, the lowest first.
inline std::string Longs(std::initializer_list<std::int64_t> numbers) {
  std::string text;
  for (const std::int64_t number : numbers) {
    for (int shift = 0; shift < 32; shift += 8) text += static_cast<char>(number >> shift);
  }
  return text;
}

// By zlib itself.
inline std::string Compressed(const std::string& plain) {
  uLongf size = compressBound(static_cast<uLong>(plain.size()));
  std::string result(size, '\0');
  compress(reinterpret_cast<Bytef*>(result.data()), &size,
           reinterpret_cast<const Bytef*>(plain.data()), static_cast<uLong>(plain.size()));
  result.resize(size);
  return result;
}

}  // namespace test
