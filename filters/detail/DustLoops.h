// The search for dust over vectors of any width, and the sums that it compares.
#pragma once

#include <cstddef>
#include <cstdint>

#include "filters/detail/DustKernels.h"
#include "filters/pixels/simd/Vectors.h"

namespace kernels {
namespace {

inline void AddChannelsLoop(const std::uint8_t* colour, int width, std::uint16_t* sums) {
  for (int x = 0; x < width; ++x) {
    sums[x] = static_cast<std::uint16_t>(colour[3 * x] + colour[3 * x + 1] + colour[3 * x + 2]);
  }
}

// Counts for a block of pixels at once, ring by ring from the middle, until all have more pixels
// like themselves than dust has. In a photograph that is mostly so within the first ring.
class DustBlock {
 public:
  DustBlock(const std::uint16_t* const* sumRows, const DustLimits& limits)
      : sums(sumRows),
        tolerance(All<Shorts>(limits.tolerance)),
        greatestRegion(All<Shorts>(limits.greatestRegion)) {}

  // All bits for dust.
  [[gnu::always_inline]] Shorts Find(std::ptrdiff_t x) const {
    const auto centre = Load<Shorts>(sums[kDustReach] + x);
    Words count = {};
    Shorts isDust = All<Shorts>(-1);
    for (int ring = 1; ring <= kDustReach && IsAny(isDust); ++ring) {
      if (ring == 1) Count(0, 0, x, centre, count);
      for (int side = -ring; side < ring; ++side) {
        Count(-ring, side, x, centre, count);
        Count(side, ring, x, centre, count);
        Count(ring, -side, x, centre, count);
        Count(-side, -ring, x, centre, count);
      }
      isDust = (Shorts)count <= greatestRegion;
    }
    return isDust;
  }

 private:
  [[gnu::always_inline]] void Count(int row, int column, std::ptrdiff_t x, Shorts centre,
                                    Words& count) const {
    const Shorts apart = centre - Load<Shorts>(sums[kDustReach + row] + x + column);
    count = AddOneWhereLess(count, apart < 0 ? -apart : apart, tolerance);
  }

  const std::uint16_t* const* sums;
  const Shorts tolerance, greatestRegion;
};

inline void FindDustInBlocks(const std::uint16_t* const* sums, int width, const DustLimits& limits,
                             std::uint8_t* isDust) {
  constexpr std::ptrdiff_t kPixels = kLanes<Shorts>;
  using Marks [[gnu::vector_size(kPixels)]] = std::uint8_t;
  const DustBlock block(sums, limits);
  const auto find = [&block](std::ptrdiff_t x) __attribute__((always_inline)) {
    return __builtin_convertvector(block.Find(x), Marks);
  };
  std::ptrdiff_t x = 0;
  for (; x + kPixels <= width; x += kPixels) Store(isDust + x, find(x));
  if (x == width) return;
  const Marks rest = find(x);
  __builtin_memcpy(isDust + x, &rest, static_cast<std::size_t>(width - x));
}

}  // namespace
}  // namespace kernels
