// Packed bitmaps as they are stored: checked before anything is read of them.
#pragma once

#include <wtypes.h>

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "imageio/ImageFile.h"

namespace imageio {

// A bitmap of 1, 4, 8, 24 or 32 bits without compression, bottom row first, or a mask of 8 bits
// with or without (-8) a colour table. Refers to bytes of the caller's.
class FXBOX_API StoredBitmap {
 public:
  // Nothing when the block is no such bitmap or not all of its rows are there; what lies behind
  // them does not matter. No size in it is trusted.
  static std::optional<StoredBitmap> Parse(std::span<const std::uint8_t> block);

  // The same by the 40 bytes of its head alone, whether its rows are there or not; nothing else of
  // the bitmap may be read.
  static std::optional<StoredBitmap> ParseHead(std::span<const std::uint8_t> block);

  int Width() const { return width; }
  int Height() const { return height; }
  // -8 for a plane without a table.
  int Bits() const { return bits; }
  // Entries of the colour table.
  std::uint32_t Colours() const { return colours; }
  // Whether it can be a mask beside a picture.
  bool IsMask() const { return bits == 8 || bits == -8; }
  // Head, table and rows.
  std::uint64_t Bytes() const { return rowsAt + stride * static_cast<std::uint64_t>(height); }

  // Row y, 0 for the bottom row, as blue, green, red.
  void ReadColours(int y, BYTE* to) const;
  // The 8-bit values of row y.
  const BYTE* MaskRow(int y) const { return Row(y); }

 private:
  const BYTE* Row(int y) const {
    return block.data() + rowsAt + stride * static_cast<std::uint64_t>(y);
  }
  unsigned IndexOf(const BYTE* row, int x) const;

  std::span<const std::uint8_t> block;
  int width = 0;
  int height = 0;
  int bits = 0;
  std::uint32_t colours = 0;
  std::uint64_t rowsAt = 0;
  std::uint64_t stride = 0;
};

// How many bytes a bitmap of this head claims: its own size, its rows by biSizeImage or, where that
// is 0, by their number, and its table. 0 for less than a head.
FXBOX_API std::uint64_t ClaimedBitmapBytes(std::span<const std::uint8_t> block);

// A whole bitmap in the form in which pictures are stored: 24 bits. Empty when it would be larger
// than 2^31 - 1 bytes.
FXBOX_API std::vector<std::uint8_t> BlankColourBitmap(int width, int height);
// The same for a mask: 8 bits with 256 greys.
FXBOX_API std::vector<std::uint8_t> BlankMaskBitmap(int width, int height);

// Rows of a bitmap made by one of the two, row 0 at the bottom. The bitmap stays the caller's.
FXBOX_API std::vector<BYTE*> RowsOf(std::vector<std::uint8_t>& bitmap);

}  // namespace imageio
