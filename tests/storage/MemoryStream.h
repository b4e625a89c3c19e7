// A stream over bytes in memory, with a place for every fault that a stream can have.
#pragma once

#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>

#include "base/KvInterfaces.h"

namespace test {

// Close leaves the object, which belongs to the test.
class MemoryStream final : public IKvStream {
 public:
  explicit MemoryStream(std::string start = {}) : bytes(std::move(start)) {}

  unsigned Read(void* buffer, unsigned count) override {
    ++reads;
    if (endlessZeros) {
      std::memset(buffer, 0, count);
      return count;
    }
    const auto got = static_cast<unsigned>(std::min<std::size_t>(count, bytes.size() - position));
    std::memcpy(buffer, bytes.data() + position, got);
    position += got;
    return got;
  }
  unsigned Write(const void* buffer, unsigned count) override {
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
  bool endlessZeros = false;
  int reads = 0;
  int writes = 0;
};

// Half of it repeats, so that it compresses.
inline std::string MixedBytes(std::size_t size, unsigned seed = 1) {
  std::mt19937 random(seed);
  std::string bytes(size, 'x');
  for (std::size_t i = 0; i < size; i += 2) bytes[i] = static_cast<char>(random() % 64);
  return bytes;
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
