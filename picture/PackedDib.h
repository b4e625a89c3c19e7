// Packed bitmaps in blocks of global memory: checked before anything is read or written.
#pragma once

#include <wtypes.h>

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "imageio/BmpLayout.h"
#include "picture/DibFunctions.h"

namespace picture {

// A bitmap that was checked to be whole but for its run lengths. Whatever is wrong with one is an
// imageio::ImageError.
class DibReader {
 public:
  // A packed bitmap, or one behind the head of a BMP file.
  DibReader(imageio::Source& from, bool isFile);

  const imageio::BmpLayout& Layout() const { return layout; }
  std::int64_t Width() const { return layout.width; }
  std::int64_t Height() const { return layout.height; }
  std::uint64_t RowsAt() const { return rowsAt; }
  // Bytes of the rows, as far as the source goes where they have run lengths.
  std::uint64_t RowsBytes() const;
  // -8 for a plane.
  int SignedBits() const { return layout.isPlane ? -layout.bits : layout.bits; }

  // Hands out every row without run lengths, not filled up; y is 0 for the bottom row.
  using TakeRow = std::function<void(std::int64_t y, const BYTE* packed)>;
  void ForEachRow(const TakeRow& take) const;
  // The same as blue, green, red.
  void ForEachColourRow(const TakeRow& take) const;

 private:
  static std::uint64_t ReadFileHead(imageio::Cursor& cursor, bool isFile);
  void CheckSizes(bool isFile);
  void UnpackRuns(const TakeRow& take) const;

  imageio::Source* source;
  imageio::Cursor head;
  std::uint64_t rowsAt;  // from here on: as the file says, then as it is
  imageio::BmpLayout layout;
};

// A block while it is locked. An ImageError when there is none.
class GlobalBlock {
 public:
  explicit GlobalBlock(DibHandle block);
  ~GlobalBlock();
  GlobalBlock(const GlobalBlock&) = delete;
  GlobalBlock& operator=(const GlobalBlock&) = delete;

  BYTE* Bytes() const { return bytes; }
  std::size_t Size() const { return size; }

 private:
  DibHandle handle;
  std::size_t size;
  BYTE* bytes;
};

// A bitmap in such a block.
class LockedDib {
 public:
  explicit LockedDib(DibHandle dib);
  LockedDib(const LockedDib&) = delete;
  LockedDib& operator=(const LockedDib&) = delete;

  const DibReader& Reader() const { return reader; }
  // Row y, 0 for the bottom row; not for run lengths.
  BYTE* Row(std::int64_t y) const;
  // The colour table, 4 bytes a colour; null where there is none of this form.
  BYTE* Colours() const;

 private:
  GlobalBlock block;
  imageio::MemorySource source;
  DibReader reader;
};

// A new block. It frees itself unless it is handed out.
class FreshDib {
 public:
  // Rows are zeros. `colours` are 4 bytes each; three `fields` stand behind the head where there
  // are any. A height below 0 means rows from the top down. An ImageError where sides or size are
  // out of range, std::bad_alloc.
  FreshDib(int bits, std::int64_t width, std::int64_t height, std::span<const BYTE> colours = {},
           std::span<const std::uint32_t> fields = {});
  ~FreshDib();
  FreshDib(const FreshDib&) = delete;
  FreshDib& operator=(const FreshDib&) = delete;

  // Stored row, from the first.
  BYTE* Row(std::int64_t stored) const { return rows + stored * rowBytes; }
  std::size_t RowBytes() const { return static_cast<std::size_t>(rowBytes); }
  DibHandle Release();

 private:
  DibHandle block;
  BYTE* rows;
  std::int64_t rowBytes;
};

// Which of `from` pixels lies nearest to each of `to`, both at most 2^31 - 1.
struct Nearest {
  std::int64_t from;
  std::int64_t to;

  std::int64_t SourceOf(std::int64_t target) const { return (2 * target + 1) * from / (2 * to); }
  // The first target whose source is this one or lies behind it.
  std::int64_t FirstTarget(std::int64_t source) const {
    return (2 * to * source + from - 1) / (2 * from);
  }
};

// 256 greys, or the standard colours for this many bits; 4 bytes each.
std::vector<BYTE> GreyColours();
std::vector<BYTE> StandardColours(int bits);

// A bitmap in the shape that all functions give.
DibHandle CopyDib(const DibReader& reader);
DibHandle ScaleDib(const DibReader& reader, std::int64_t width, std::int64_t height);

}  // namespace picture
