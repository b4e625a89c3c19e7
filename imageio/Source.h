// Bytes of a picture file: where they come from, and reading them in order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <vector>

#include "imageio/ImageFile.h"

namespace imageio {

inline constexpr char kEndsEarly[] = "the file ends in the middle of the picture";

// A picture file on disk or in memory. Reading by position lets several decoders share one source.
class Source {
 public:
  virtual ~Source() = default;

  // Gives the number of bytes read, fewer than asked only at the end; a disk that fails ends the
  // file. Never throws, so that the C libraries may call it.
  virtual std::size_t ReadAt(std::uint64_t position, void* to, std::size_t count) noexcept = 0;
  std::uint64_t Size() const noexcept { return size; }

 protected:
  std::uint64_t size = 0;
};

class FileSource final : public Source {
 public:
  explicit FileSource(const std::filesystem::path& file);
  std::size_t ReadAt(std::uint64_t position, void* to, std::size_t count) noexcept override;

 private:
  std::ifstream stream;
  std::uint64_t streamPosition = 0;
};

class MemorySource final : public Source {
 public:
  MemorySource(const std::uint8_t* bytes, std::size_t count);
  std::size_t ReadAt(std::uint64_t position, void* to, std::size_t count) noexcept override;

 private:
  const std::uint8_t* first;
};

// Reads a source in order, byte by byte or in blocks, through a small buffer.
class Cursor {
 public:
  explicit Cursor(Source& from, std::uint64_t position = 0) : source(&from), next(position) {}

  // The next byte, or -1 at the end.
  int Byte();
  // The next byte. At the end an ImageError: kEndsEarly.
  std::uint8_t NeedByte();
  void NeedBytes(std::uint8_t* to, std::size_t count);
  void Skip(std::uint64_t count);
  // Where the next byte lies.
  std::uint64_t Position() const { return next - (filled - used); }

 private:
  bool Refill();

  Source* source;
  std::uint64_t next;  // what the next Refill reads
  std::vector<std::uint8_t> buffer;
  std::size_t used = 0;
  std::size_t filled = 0;
};

}  // namespace imageio
