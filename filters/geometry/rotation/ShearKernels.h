// The steps of a rotation on rows of pixels: into quads and back, and moves by a part of a pixel.
#pragma once

#include <cstddef>
#include <cstdint>

#include "filters/geometry/rotation/Quads.h"
#include "filters/pixels/simd/Simd.h"

namespace kernels {

// A part of a pixel, 0 to below 1, in the two precisions that a move works with.
struct PixelPart {
  std::int32_t of32 = 0;     // 0 to 31, truncated
  std::int32_t of16384 = 0;  // 0 to 16384, rounded
};

// A pixel that lies between `previous` and `current`, this part of the way from the one to the
// other. Equal masks are kept; unequal ones give each colour the weight of what is there. Where
// there is nothing, neither the two nor the result have a colour.
Quad BlendQuads(Quad previous, Quad current, PixelPart part);

// Parts of many pixels side by side; `of32` has each one four times, once for each byte of a quad.
struct PixelParts {
  const std::uint8_t* of32;
  const std::int32_t* of16384;
};

// Functions for any count from 0. Rows must not overlap but for `previous` and `current`.
struct ShearKernelTable {
  void (*join)(const std::uint8_t* colour, const std::uint8_t* mask, Quad* quads, int count);
  void (*split)(const Quad* quads, std::uint8_t* colour, std::uint8_t* mask, int count);
  // to[x][y] = from[y][x], for `width` quads of each of `height` rows. Distances in quads.
  void (*transpose)(const Quad* from, std::ptrdiff_t fromStride, Quad* to, std::ptrdiff_t toStride,
                    int width, int height);
  // result[i] = BlendQuads(previous[i], current[i], part), one part for all or one for each.
  void (*blend)(const Quad* previous, const Quad* current, Quad* result, int count, PixelPart part);
  void (*blendEach)(const Quad* previous, const Quad* current, Quad* result, int count,
                    PixelParts parts);

  // For Choose.
  static const ShearKernelTable& Plain();
  static const ShearKernelTable& Avx2();
  static const ShearKernelTable& Avx512();
};

// The plain forms of the first three.
void JoinQuads(const std::uint8_t* colour, const std::uint8_t* mask, Quad* quads, int count);
void SplitQuads(const Quad* quads, std::uint8_t* colour, std::uint8_t* mask, int count);
void TransposeQuads(const Quad* from, std::ptrdiff_t fromStride, Quad* to, std::ptrdiff_t toStride,
                    int width, int height);

}  // namespace kernels
