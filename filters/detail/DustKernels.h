// Dust: finds pixels that few pixels around them are like, and replaces them by their surroundings.
#pragma once

#include <atomic>
#include <cstdint>

#include "base/RowView.h"
#include "filters/pixels/simd/Simd.h"

namespace kernels {

// Pixels are alike when the sums of their channels are less than `tolerance` apart; a pixel is like
// itself then, but with a tolerance of 0 like none. Dust is what no more than `greatestRegion`
// pixels of the window of 11 x 11 around it are like, of those that lie in the picture. It becomes
// the mean of its block of 3 x 3, truncated. All comparisons and means are those of the picture as
// it was. The outermost rows and columns stay, and the mask plays no part.
//
// Works in place, from the first row on, in blocks that workers share, and tests `abort` ahead of
// each row; false when that ended it.
// Takes memory for some rows and may throw std::bad_alloc.
bool RemoveDust(const base::WritableRows& picture, int tolerance, int greatestRegion,
                const std::atomic<bool>& abort);

// --- One row of it, by vector unit.

inline constexpr int kDustReach = 5;  // of the window, either way
inline constexpr int kDustRows = 2 * kDustReach + 1;
// Stands for a pixel outside the picture: unlike every other.
inline constexpr std::uint16_t kNoSum = 1 << 14;
// How many sums must be readable behind those of the last pixel.
inline constexpr int kDustPadding = kDustReach + 32;

// A tolerance and a region in the range in which they make a difference.
struct DustLimits {
  int tolerance;       // 0..766
  int greatestRegion;  // -1..121
};

struct DustKernelTable {
  // The sums of `width` pixels.
  void (*addChannels)(const std::uint8_t* colour, int width, std::uint16_t* sums);
  // Marks dust by 255 and all others by 0. `sums` are those of the rows from 5 below to 5 above,
  // each at the first pixel, with kNoSum in 5 places ahead of it and behind the last.
  void (*findDust)(const std::uint16_t* const* sums, int width, const DustLimits& limits,
                   std::uint8_t* isDust);

  // For Choose.
  static const DustKernelTable& Plain();
  static const DustKernelTable& Avx2();
  static const DustKernelTable& Avx512();
};

}  // namespace kernels
