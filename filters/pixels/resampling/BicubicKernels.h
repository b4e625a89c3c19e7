// The two passes of the bicubic enlargement over single rows.
#pragma once

#include <cstddef>
#include <cstdint>

#include "filters/pixels/resampling/BicubicTaps.h"
#include "filters/pixels/simd/Simd.h"

namespace kernels {

// A pixel of a picture with a mask, ready to be weighted: its colours times its opacity, which is
// 255 - mask, and the opacity itself.
struct WeighedPixel {
  std::uint16_t channel[3];
  std::uint16_t opacity;
};
static_assert(sizeof(WeighedPixel) == 8);

// Pixels that a source row has ahead of the first one and behind the last one, as copies of these.
// The fast kernels read, but do not use, all of them.
inline constexpr int kBicubicMargin = 4;

// Functions with the same results at every level, byte for byte. No entry is null. Sums that are
// divided are divided with truncation and limited to a byte.
struct BicubicKernels {
  // Opaque rows, 3 bytes a pixel: one row stretched, and four rows blended byte by byte.
  void (*stretch)(std::uint8_t* to, const std::uint8_t* from, const BicubicTap* taps, int count);
  void (*blend)(std::uint8_t* to, const std::uint8_t* const (&rows)[4], std::size_t bytes,
                const BicubicWeights& weights);
  // The same with a mask.
  void (*weigh)(WeighedPixel* to, const std::uint8_t* colour, const std::uint8_t* mask, int width);
  void (*stretchMasked)(WeighedPixel* to, const WeighedPixel* from, const BicubicTap* taps,
                        int count);
  void (*blendMasked)(std::uint8_t* colour, std::uint8_t* mask,
                      const WeighedPixel* const (&rows)[4], int width,
                      const BicubicWeights& weights);

  // For Choose.
  static const BicubicKernels& Plain();
  static const BicubicKernels& Avx2();
  static const BicubicKernels& Avx512();
};

}  // namespace kernels
