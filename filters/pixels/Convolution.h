// The 3 x 3 convolution that sharpening, softening, edges, relief and smoked glass share.
#pragma once

#include <atomic>
#include <cstdint>

#include "base/RowView.h"

namespace kernels {

// A full-strength kernel: what the nine bytes around a byte weigh, by increasing row and column,
// over one divisor.
struct KernelTable {
  std::int8_t weight[9];
  std::int8_t divisor;
};

inline constexpr KernelTable kSharpenTable = {{0, -1, 0, -1, 5, -1, 0, -1, 0}, 1};
inline constexpr KernelTable kSoftenTable = {{4, 4, 4, 4, 5, 4, 4, 4, 4}, 37};
inline constexpr KernelTable kFindEdgesTable = {{1, 1, 1, 1, -8, 1, 1, 1, 1}, 1};
// A flat area turns black at full strength: the relief is not centred on grey.
inline constexpr KernelTable kEmbossTable = {{2, 0, 0, 0, 0, 0, 0, 0, -2}, 1};

// A table blended with the picture. The result of a byte is
//
//   centre + share * (sum of change * byte)
//
// limited to 0..255 and truncated. 2^-20 is added before, so that what is whole in exact arithmetic
// is not lost to rounding; with a whole strength the result is thus the exact one, as any fraction
// that can occur is further away from the next whole number. A flat area stays flat, and more so a
// picture of one pixel, wherever the weights of the table sum to its divisor.
struct Kernel3x3 {
  std::int8_t change[9];
  double share;
  // share = steps / per. `steps` is -1 where that is not exact or leaves the range in which the
  // fast paths count in 16 bits.
  int steps;
  int per;
};

// `strength` is a percentage: 0 leaves the picture, 100 is the table. Beyond 100 the blend goes on.
// The magnitudes of the table's weights sum to 64 at most.
Kernel3x3 BlendKernel(const KernelTable& table, double strength);

// A part of a picture, which lies in it.
struct PictureArea {
  int x, y, width, height;
};

// Convolves an area in place, row by row from its first row, in blocks that workers share. A
// neighbour counts as if it had the colour of the centre where its mask is 255 or where it lies
// outside the picture; outside the area the neighbours are what they are. Masks stay. Tests `abort`
// ahead of each row; false when that ended it, the rows of a block from there on being untouched.
// Takes memory for a few rows and may throw std::bad_alloc. Without mask rows everything is opaque.
bool Convolve3x3(const Kernel3x3& kernel, const base::WritableRows& picture,
                 const PictureArea& area, const std::atomic<bool>& abort);

// The same into rows elsewhere, masks included: row i of the area to row i of the result, from the
// last one of the area, or of each of the workers' bands, to the first. The picture, which has
// masks, stays. Rows are whole or untouched.
bool Convolve3x3(const Kernel3x3& kernel, const base::RowView& picture, const PictureArea& area,
                 const base::WritableRows& result, const std::atomic<bool>& abort);

}  // namespace kernels
