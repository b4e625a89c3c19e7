#include "storage/BufferedStream.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr unsigned kBufferBytes = 1 << 16;

}  // namespace

// --- reading

BufferedReader::BufferedReader(IKvStream& stream)
    : source(&stream), buffer(std::make_unique<BYTE[]>(kBufferBytes)) {
  const unsigned length = stream.GetLength();
  left = length - std::min(length, stream.GetPosition());
}

bool BufferedReader::Refill() {
  used = 0;
  const unsigned wanted = std::min(kBufferBytes, left);
  filled = wanted > 0 ? std::min(source->Read(buffer.get(), wanted), wanted) : 0;
  left -= filled;
  return filled > 0;
}

unsigned BufferedReader::Read(void* to, unsigned count) {
  auto* next = static_cast<BYTE*>(to);
  unsigned done = 0;
  while (done < count && (used < filled || Refill())) {
    const unsigned piece = std::min(count - done, filled - used);
    std::memcpy(next + done, buffer.get() + used, piece);
    used += piece;
    done += piece;
  }
  return done;
}

// --- writing

BufferedWriter::BufferedWriter(IKvWrite& stream)
    : target(&stream), buffer(std::make_unique<BYTE[]>(kBufferBytes)) {}

unsigned BufferedWriter::Write(const void* from, unsigned size) {
  const auto* next = static_cast<const BYTE*>(from);
  unsigned done = 0;
  while (done < size && !hasFailed) {
    const unsigned piece = std::min(size - done, kBufferBytes - filled);
    std::memcpy(buffer.get() + filled, next + done, piece);
    filled += piece;
    done += piece;
    if (filled == kBufferBytes) Flush();
  }
  count += done;
  return hasFailed ? 0 : done;
}

bool BufferedWriter::Flush() {
  if (filled > 0 && !hasFailed && target->Write(buffer.get(), filled) != filled) hasFailed = true;
  filled = 0;
  return !hasFailed;
}
