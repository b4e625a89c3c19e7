#include "imageio/Source.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>

namespace imageio {
namespace {

std::string LastReason() {
  const int error = errno;
  return error ? ": " + std::generic_category().message(error) : "";
}

}  // namespace

FileSource::FileSource(const std::filesystem::path& file) {
  std::error_code ignored;
  if (std::filesystem::is_directory(file, ignored)) throw ImageError("it is a folder");
  stream.open(file, std::ios::binary | std::ios::ate);
  if (!stream) throw ImageError("the file cannot be opened" + LastReason());
  const std::streamoff end = stream.tellg();
  char first = 0;
  if (end < 0 || (end > 0 && !stream.seekg(0).get(first))) {
    throw ImageError("the file cannot be read" + LastReason());
  }
  size = static_cast<std::uint64_t>(end);
  streamPosition = end > 0 ? 1 : 0;
}

std::size_t FileSource::ReadAt(std::uint64_t position, void* to, std::size_t count) noexcept try {
  if (position >= size) return 0;
  count = static_cast<std::size_t>(std::min<std::uint64_t>(count, size - position));
  if (position != streamPosition) stream.seekg(static_cast<std::streamoff>(position));
  stream.read(static_cast<char*>(to), static_cast<std::streamsize>(count));
  const auto got = static_cast<std::size_t>(stream.gcount());
  streamPosition = position + got;
  stream.clear();
  return got;
} catch (...) {
  return 0;
}

MemorySource::MemorySource(const std::uint8_t* bytes, std::size_t count) : first(bytes) {
  size = count;
}

std::size_t MemorySource::ReadAt(std::uint64_t position, void* to, std::size_t count) noexcept {
  if (position >= size) return 0;
  count = static_cast<std::size_t>(std::min<std::uint64_t>(count, size - position));
  if (count > 0) std::memcpy(to, first + position, count);
  return count;
}

bool Cursor::Refill() {
  constexpr std::size_t kBufferBytes = 1 << 16;
  buffer.resize(kBufferBytes);
  filled = source->ReadAt(next, buffer.data(), buffer.size());
  next += filled;
  used = 0;
  return filled > 0;
}

int Cursor::Byte() {
  if (used == filled && !Refill()) return -1;
  return buffer[used++];
}

std::uint8_t Cursor::NeedByte() {
  const int byte = Byte();
  if (byte < 0) throw ImageError(kEndsEarly);
  return static_cast<std::uint8_t>(byte);
}

void Cursor::NeedBytes(std::uint8_t* to, std::size_t count) {
  while (count > 0) {
    if (used == filled && !Refill()) throw ImageError(kEndsEarly);
    const std::size_t part = std::min(count, filled - used);
    std::memcpy(to, buffer.data() + used, part);
    used += part;
    to += part;
    count -= part;
  }
}

void Cursor::Skip(std::uint64_t count) {
  if (count <= filled - used) {
    used += static_cast<std::size_t>(count);
    return;
  }
  next += count - (filled - used);
  used = filled = 0;
}

}  // namespace imageio
