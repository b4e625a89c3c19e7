// Kernels that look at a pixel's luminance or at its grey, on plain rows.
//
// Rows and widths as in PointKernels.h. The luminance is (151 green + 77 red + 28 blue) / 256.
#pragma once

#include <array>
#include <cstdint>

#include "filters/pixels/ByteTableKernels.h"
#include "filters/pixels/simd/Simd.h"

namespace kernels {

// Writes the luminance of each pixel.
void Luminance(std::uint8_t* to, const std::uint8_t* colour, int width);

// Replaces the luminance by its entry and keeps the colour differences: there and back through YIQ,
// in single precision. Limited to 0..255. An unchanged luminance may still lose a level.
void ReplaceLuminance(std::uint8_t* colour, int width, const ByteTable& table);

// A factor for each luminance: finite, and so large at most that no product overflows.
using LuminanceFactors = std::array<double, 256>;

// Multiplies all channels by the factor of the pixel's luminance, rounded. Limited to 255.
void ScaleByLuminance(std::uint8_t* colour, int width, const LuminanceFactors& factors);

// How far a channel moves away from the grey of its pixel, by its level: towards black above 0,
// towards white below.
struct GreyMove {
  std::array<std::int32_t, 256> taken = {};
  // The same without the sign, where it fits into bytes and all have one sign.
  bool fitsBytes = true;
  bool raises = false;
  ByteTable size = {};
};
struct GreyMoves {
  GreyMove blue, green, red;
};

// i - 255 * (i / 255) ^ exponent, truncated.
GreyMove BuildGreyMove(double exponent);

// Moves each channel in proportion to its distance from the mean of the three: a grey stays. Low
// eight bits.
void MoveFromGrey(std::uint8_t* colour, int width, const GreyMoves& moves);

// The same functions, byte for byte, at the speed of a vector unit.
struct LuminanceKernelTable {
  void (*luminance)(std::uint8_t* to, const std::uint8_t* colour, int width);
  void (*replaceLuminance)(std::uint8_t* colour, int width, const ByteTable& table);
  void (*scaleByLuminance)(std::uint8_t* colour, int width, const LuminanceFactors& factors);
  void (*moveFromGrey)(std::uint8_t* colour, int width, const GreyMoves& moves);

  // For Choose.
  static const LuminanceKernelTable& Plain();
  static const LuminanceKernelTable& Avx2();
  static const LuminanceKernelTable& Avx512();
};

}  // namespace kernels
