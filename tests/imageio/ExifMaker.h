// EXIF blocks for the tests.
#pragma once

#include <string>

#include "tests/imageio/TestPicture.h"

namespace test {

// Writes numbers in one byte order.
class BlockWriter {
 public:
  explicit BlockWriter(bool littleEndian, const Bytes& begin = {})
      : block(begin), little(littleEndian) {}
  // Begins a TIFF structure, whose first directory has so many entries.
  BlockWriter(bool littleEndian, std::uint32_t entries)
      : BlockWriter(littleEndian, BytesOf(littleEndian ? "II" : "MM")) {
    Number(42, 2);
    Number(8, 4);
    Number(entries, 2);
  }
  void Number(std::uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) {
      block.push_back(static_cast<std::uint8_t>(value >> 8 * (little ? i : bytes - 1 - i)));
    }
  }
  void Entry(std::uint32_t tag, std::uint32_t type, std::uint32_t count, std::uint32_t value) {
    Number(tag, 2);
    Number(type, 2);
    Number(count, 4);
    if (type == 3) {
      Number(value, 2);
      Number(0, 2);
    } else {
      Number(value, 4);
    }
  }
  void Longs(std::initializer_list<std::uint32_t> values) {
    for (const std::uint32_t value : values) Number(value, 4);
  }
  Bytes block;

 private:
  bool little;
};

inline constexpr char kCamera[] = "Test Camera";  // with its end 12 bytes
inline constexpr std::size_t kThumbnailBytes = 20;

// A block with a camera's name, the orientation, a directory of its own with an exposure time, one
// with a position, and a thumbnail at the end.
inline Bytes MakeExif(bool little, int orientation) {
  BlockWriter writer(little, 4);  // the main directory, up to 62
  writer.Entry(0x0110, 2, sizeof kCamera, 62);
  writer.Entry(0x0112, 3, 1, static_cast<std::uint32_t>(orientation));
  writer.Entry(0x8769, 4, 1, 74);
  writer.Entry(0x8825, 4, 1, 100);
  writer.Number(118, 4);
  writer.block.insert(writer.block.end(), kCamera, kCamera + sizeof kCamera);
  writer.Number(1, 2);  // exposure, up to 92
  writer.Entry(0x829A, 5, 1, 92);
  writer.Longs({0, 1, 250});
  writer.Number(1, 2);  // position, up to 118
  writer.Entry(0x0000, 1, 4, 0x02030000);
  writer.Number(0, 4);
  writer.Number(2, 2);  // the thumbnail's directory, up to 148
  writer.Entry(0x0201, 4, 1, 148);
  writer.Entry(0x0202, 4, 1, kThumbnailBytes);
  writer.Number(0, 4);
  writer.block.resize(148 + kThumbnailBytes, 0xEE);
  return writer.block;
}

inline imageio::Metadata WithExif(const Bytes& exif) {
  return {exif, {}, {}, {}, {}};
}

}  // namespace test
