// The point kernels that have faster forms, chosen by vector unit.
#pragma once

#include <cstddef>
#include <cstdint>

#include "filters/pixels/PointKernels.h"
#include "filters/pixels/simd/Simd.h"

namespace kernels {

// Functions with the contracts of PointKernels.h and byte for byte their results.
struct PointKernelTable {
  void (*sepia)(std::uint8_t* colour, int width, std::uint8_t keep);
  void (*blackWhite)(std::uint8_t* colour, int width, int percent);
  void (*shiftColours)(std::uint8_t* colour, int width, const ColourOffsets& offsets);
  void (*invert)(std::uint8_t* bytes, std::size_t count, int percent);
  void (*fade)(std::uint8_t* mask, std::size_t count, std::uint8_t keep);
  void (*invertMask)(const MaskedRow& to, const GivenMaskedRow& from, int width, Colour fill,
                     int percent);
  void (*putBackground)(const MaskedRow& to, const GivenMaskedRow& from, int width,
                        Colour background, int percent);

  // For Choose.
  static const PointKernelTable& Plain();
  static const PointKernelTable& Avx2();
  static const PointKernelTable& Avx512();
};

}  // namespace kernels
