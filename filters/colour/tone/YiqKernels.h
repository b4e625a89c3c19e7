// Curves on the luminance of a pixel whose colour is kept, on plain rows, and their faster forms by
// vector unit.
//
// Rows and widths as in PointKernels.h.
#pragma once

#include <cstdint>

#include "filters/pixels/ByteTableKernels.h"
#include "filters/pixels/simd/Simd.h"

namespace kernels {

// Replaces the luminance of each pixel by its entry in the table and leaves both colour differences
// (YIQ), in doubles; channels are limited to 0..255 and truncated. The luminance that the table is
// asked for is weighted in whole numbers and a little off the one of the matrix: a table that
// changes nothing still changes most colours by a level or so.
void MapLuminance(std::uint8_t* colour, int width, const ByteTable& table);

// The same function, byte for byte, at the speed of a vector unit.
struct YiqKernels {
  void (*mapLuminance)(std::uint8_t* colour, int width, const ByteTable& table);

  // For Choose.
  static const YiqKernels& Plain();
  static const YiqKernels& Avx2();
  static const YiqKernels& Avx512();
};

}  // namespace kernels
