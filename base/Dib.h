// Layout of packed device-independent bitmaps: a 40-byte header, a colour table, rows padded to 4
// bytes.
#pragma once

#include <wtypes.h>

#include <cstddef>
#include <cstdint>
#include <optional>

namespace base {

inline constexpr std::size_t kDibHeaderBytes = 40;
// Bit count of a mask plane: 8 bits a pixel without a colour table. Whoever computes sizes takes 8.
inline constexpr int kMaskBits = -8;
inline constexpr int kColourBits = 24;

// The first part of a packed bitmap, in the system's layout.
struct DibHeader {
  std::uint32_t biSize;
  std::int32_t biWidth;
  std::int32_t biHeight;  // positive: the first row is the bottom row
  std::uint16_t biPlanes;
  std::uint16_t biBitCount;
  std::uint32_t biCompression;
  std::uint32_t biSizeImage;
  std::int32_t biXPelsPerMeter;
  std::int32_t biYPelsPerMeter;
  std::uint32_t biClrUsed;
  std::uint32_t biClrImportant;

  // The bit count with its sign: kMaskBits for a mask plane.
  int Bits() const { return static_cast<std::int16_t>(biBitCount); }
};
static_assert(sizeof(DibHeader) == kDibHeaderBytes);

// The 16 colours that a colour table repeats when nobody chose others: 0xRRGGBB.
std::uint32_t StandardDibColour(std::size_t index);

// Bytes of the colour table that stands behind the header: 1,024 at 8 bits, 64 at 4, none else.
constexpr std::size_t DibColourTableBytes(int bits) {
  return bits == 8 ? 1024 : bits == 4 ? 64 : 0;
}

// Bytes from one row to the next: |bits| * width / 8, rounded up to 4 the way every reader does it.
constexpr std::int64_t DibStride(int bits, std::int64_t width) {
  return ((bits < 0 ? -bits : bits) * width / 8 + 3) / 4 * 4;
}

// Bytes of a whole packed bitmap. Nothing for a side below 1 or a result beyond 2^31 - 1, which the
// 32-bit fields of a picture block could not hold.
std::optional<std::size_t> DibBytes(int bits, std::int64_t width, std::int64_t height);

// Makes memory of DibBytes size a bitmap: header, colour table and, where they are to be cleared,
// bits 0 (255 in 8-bit planes). The caller has checked the size. `at` is aligned to 4.
void BuildDib(BYTE* at, int bits, int width, int height, bool isCleared = true);

// Sets every bit of the rows, header and colour table left alone.
void FillDib(BYTE* dib, BYTE value);

// First byte of the first row.
BYTE* DibRows(BYTE* dib);

}  // namespace base
