// Which source pixels a pixel of a reduced picture takes along one axis, and how much each weighs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kernels {

// Weights fall off with the squared distance. Each axis gives an index, and the table holds the
// weight at the sum of both: exp(-k / 1024) in 65535ths, truncated, for sums below the largest
// index, and 1 from there on. None is 0, so that no window is without weight.
inline constexpr int kLargestWeightIndex = 10646;
const std::uint16_t* ReductionWeights();

// Where the output begins, in output pixels from the origin that lies `offset` pixels inside the
// source. Offsets are 16-bit: what does not fit wraps.
std::int32_t OutputStart(int sourceLength, int outputLength, int offset);

// The taps of one output pixel: neighbouring source pixels, some of which may lie outside.
struct ReductionWindow {
  std::int64_t first;   // source position of the first tap
  int insideFirst;      // the taps in the source, counted from the first tap;
  int insideEnd;        // none where the end is not behind the first
  int count;            // of all taps
  std::size_t indices;  // place of the first tap's weight index

  int Inside() const { return insideEnd > insideFirst ? insideEnd - insideFirst : 0; }
};

// One axis of a reduction, of lengths above 0. Throws std::bad_alloc.
class ReductionAxis {
 public:
  ReductionAxis(int sourceLength, int outputLength, int offset);

  const std::vector<ReductionWindow>& Windows() const { return windows_; }
  // The window's weight indices, one a tap.
  const std::uint16_t* Indices(const ReductionWindow& window) const {
    return indices_.data() + window.indices;
  }
  // Taps of the widest window.
  int WidestWindow() const { return widest_; }

 private:
  std::vector<ReductionWindow> windows_;
  std::vector<std::uint16_t> indices_;
  int widest_ = 0;
};

}  // namespace kernels
