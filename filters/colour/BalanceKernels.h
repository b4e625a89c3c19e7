// Colour balance by hue, on plain rows.
//
// Rows and widths as in PointKernels.h.
#pragma once

#include <cstdint>

#include "filters/pixels/HlsKernels.h"
#include "filters/pixels/simd/Simd.h"

namespace kernels {

// What becomes of the pixels of a hue.
struct alignas(32) BalanceEntry {
  double lightness = 0;        // added
  double saturation = 1;       // factor, finite
  std::int8_t shifts[3] = {};  // added to blue, green and red, -127..127
  std::uint8_t recolours = 0;  // lightness and saturation count: 255, else 0
};

// One entry for each whole degree of hue, as in HlsKernels.h, and one for greys.
inline constexpr int kGreyEntry = kHues;
struct Balance {
  BalanceEntry entries[kHues + 1];
  bool recolours = false;  // any of them does
};

// Adds to the channels, limited to 0..255; then changes lightness and saturation of the colour that
// comes out, by the entry of the hue that the pixel had.
void BalanceColours(std::uint8_t* colour, int width, const Balance& balance);

// The same function, byte for byte, at the speed of a vector unit.
struct BalanceKernels {
  decltype(&BalanceColours) balance;

  // For Choose.
  static const BalanceKernels& Plain();
  static const BalanceKernels& Avx2();
  static const BalanceKernels& Avx512();
};

}  // namespace kernels
