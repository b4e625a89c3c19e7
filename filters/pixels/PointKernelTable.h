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
  // These two take a number and the table built from it, and use what is faster.
  void (*invert)(std::uint8_t* bytes, std::size_t count, int percent, const ByteTable& table);
  void (*fade)(std::uint8_t* mask, std::size_t count, std::uint8_t keep, const ByteTable& table);
  void (*invertMask)(std::uint8_t* colour, std::uint8_t* mask, int width, Colour fill, int percent);
  void (*putBackground)(std::uint8_t* colour, std::uint8_t* mask, int width, Colour background,
                        int percent);

  // For Choose.
  static const PointKernelTable& Plain();
  static const PointKernelTable& Avx2();
  static const PointKernelTable& Avx512();
};

}  // namespace kernels
