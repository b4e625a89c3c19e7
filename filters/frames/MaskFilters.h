// Filters on a whole mask plane, in place: smooth, relief, grow, blur.
//
// A pass computes each byte from what its neighbours were before the pass. Passes run several at a
// time behind each other down the rows, so that a row stays in the cache for all of them.
#pragma once

#include <atomic>
#include <cstdint>

namespace kernels {

// The rows of the plane may be longer than `width`.
struct MaskPlane {
  std::uint8_t* const* rows;
  int width, height;
};

// A relief's weights for the nine bytes by increasing row and column; 1.0 is the strength at which
// an edge has its own height.
struct ReliefKernel {
  double weight[9];
};

// All of these test `abort` at each row; false when it ended them, with the plane half done. They
// take memory for a few rows and may throw std::bad_alloc. Numbers below 1 do nothing. What lies on
// the edges of the plane stays: its first and last row and column, and for a pass of GrowShape and
// BlurMask as many as there are passes to come, itself counted.

// Ends early where a pass changes nothing.
bool SmoothMask(const MaskPlane& plane, int passes, const std::atomic<bool>& abort);

// 128 where the mask is flat.
bool EmbossMask(const MaskPlane& plane, const ReliefKernel& kernel, const std::atomic<bool>& abort);

// Spreads what is opaque. In the first column of a pass the two terms at the left are those of
// columns 0 and 1 of the row; so it is with BlurMask.
bool GrowShape(const MaskPlane& plane, int passes, const std::atomic<bool>& abort);

bool BlurMask(const MaskPlane& plane, int passes, const std::atomic<bool>& abort);

// A pass of BlurMask in part: `fifths` is 1 to 4.
bool FractionBlur(const MaskPlane& plane, int fifths, const std::atomic<bool>& abort);

}  // namespace kernels
