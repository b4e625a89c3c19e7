// How a bitmap lies in a BMP file or in a packed block: its head, its colour table, its rows.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "base/Export.h"
#include "imageio/RowSink.h"
#include "imageio/Source.h"

namespace imageio {

inline constexpr std::uint32_t kBmpFileHeadBytes = 14;

// Where the head of a file says that its rows begin.
constexpr std::uint32_t BmpRowsAt(const BYTE (&fileHead)[kBmpFileHeadBytes]) {
  std::uint32_t at = 0;
  for (int i = 13; i >= 10; --i) at = at << 8 | fileHead[i];
  return at;
}

enum class BmpCompression : std::uint32_t {
  None = 0,
  Rle8 = 1,
  Rle4 = 2,
  BitFields = 3,
  AlphaBitFields = 6
};

// One channel of a pixel of 16 or 32 bits.
class BmpField {
 public:
  BmpField() = default;
  explicit BmpField(std::uint32_t bits);
  bool Empty() const { return mask == 0; }
  std::uint32_t Mask() const { return mask; }
  BYTE Of(std::uint32_t pixel) const;

 private:
  std::uint32_t mask = 0;
  int shift = 0;
  std::uint32_t highest = 0;
};

// Everything but the rows. All depths and compressions that exist, heads old and new.
class FXBOX_API BmpLayout {
 public:
  // Reads head, fields and colour table; an ImageError for what is damaged or of no known kind. The
  // sides and the count of planes are the caller's to check. With `takesPlanes` a bit count of -8
  // is taken too: 8 bits without a colour table, whose values stand for greys.
  explicit BmpLayout(Cursor& cursor, bool takesPlanes = false);

  std::uint32_t headBytes = 0;  // without fields and colour table
  int planes = 0;
  bool isPlane = false;  // the bit count was -8
  std::int64_t width = 0;
  std::int64_t height = 0;
  bool topDown = false;
  std::uint32_t aMetreX = 0;  // pixels; 0 where nobody knows
  std::uint32_t aMetreY = 0;
  int bits = 0;
  BmpCompression compression = BmpCompression::None;
  BmpField red, green, blue, alpha;
  std::uint32_t coloursTold = 0;           // what the head says, 0 for all that are possible
  std::uint32_t colours = 0;               // entries of the colour table that were read
  std::array<BYTE, 3 * 256> palette = {};  // blue, green, red

  bool HasRuns() const {
    return compression == BmpCompression::Rle8 || compression == BmpCompression::Rle4;
  }
  // Bytes of a stored row with and without what fills it up to 4; not for runs.
  std::int64_t UsedRowBytes() const { return (width * bits + 7) / 8; }
  std::int64_t RowBytes() const { return (width * bits + 31) / 32 * 4; }
  // A stored row, counted from the first, as the y of a picture whose top row is 0.
  std::int64_t RowOf(std::int64_t stored) const { return topDown ? stored : height - 1 - stored; }
  // The pixels of a stored row as blue, green, red; where there is a mask and the pixels tell their
  // alpha, the mask too.
  void StorePixels(const BYTE* packed, const RowBuffer& row) const;
  void StoreIndex(int index, BYTE* colour) const;

 private:
  void ReadHead(const std::vector<BYTE>& bytes, bool takesPlanes);
  void ReadFields(const std::vector<BYTE>& bytes, Cursor& cursor);
  void ReadPalette(const std::vector<BYTE>& bytes, Cursor& cursor);
};

// Unpacks run lengths row by row.
class BmpRuns {
 public:
  BmpRuns(Source& source, std::uint64_t position, const BmpLayout& layout)
      : cursor(source, position), nibbles(layout.compression == BmpCompression::Rle4) {}

  // Palette indexes of the next stored row, as many as there is room for; what the file leaves out
  // is 0.
  void ReadRow(std::vector<BYTE>& indexes);

 private:
  void Run(int count, int value, std::vector<BYTE>& indexes);
  void Literal(int count, std::vector<BYTE>& indexes);
  void Put(int value, std::vector<BYTE>& indexes);

  Cursor cursor;
  bool nibbles;
  std::size_t x = 0;
  int blankRows = 0;
  bool ended = false;
};

}  // namespace imageio
