// One row of the 3 x 3 convolution, by vector unit.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/RowPieces.h"
#include "filters/pixels/Convolution.h"
#include "filters/pixels/simd/Simd.h"

namespace kernels {

// How many bytes must be readable behind the last pixel of each row below.
inline constexpr int kConvolutionPadding = 80;

// Three rows of a picture by increasing index, the middle one being worked on. Each pointer is at
// the first pixel of the area; one more pixel can be read on either side of it, and behind that the
// padding. `nothing` has three bytes a pixel, as colour has: 255 where the pixel does not count,
// which it never does outside the picture, else 0.
struct ConvolutionRows {
  const std::uint8_t* colour[3];
  const std::uint8_t* nothing[3];
  bool anyNothing;  // false: at most the first and the last pixel have such neighbours
  // What is fetched meanwhile: the row that is read next, and the one that is written next. Any
  // other rows serve as well, but none is null.
  base::RowWay ahead;
};

struct ConvolutionKernels {
  // Writes `width` pixels to `result`, at least one, which overlaps none of the rows.
  void (*convolveRow)(const Kernel3x3& kernel, const ConvolutionRows& rows, std::uint8_t* result,
                      int width);
  // Writes 255 to all three bytes of a pixel that the mask says is not there, else 0.
  void (*spreadNothing)(std::uint8_t* nothing, const std::uint8_t* mask, int width);

  // For Choose.
  static const ConvolutionKernels& Plain();
  static const ConvolutionKernels& Avx2();
  static const ConvolutionKernels& Avx512();
};

// What is added before a value is truncated.
inline constexpr double kConvolutionAllowance = 1.0 / (1 << 20);

}  // namespace kernels
