// The search for dust in blocks of pixels, for any vector unit, and the sums that it compares.
//
// Each file that includes this compiles it for its own processors.
#pragma once

#include <cstddef>
#include <cstdint>

#include "filters/detail/DustKernels.h"

namespace kernels {
namespace {

[[maybe_unused]] void AddChannelsLoop(const std::uint8_t* colour, int width, std::uint16_t* sums) {
  for (int x = 0; x < width; ++x) {
    sums[x] = static_cast<std::uint16_t>(colour[3 * x] + colour[3 * x + 1] + colour[3 * x + 2]);
  }
}

// Counts for a block of pixels at once, ring by ring from the middle, until all have more pixels
// like themselves than dust has. In a photograph that is mostly so within the first ring.
template <class Unit>
class DustBlock {
 public:
  using Vector = typename Unit::Vector;

  DustBlock(const std::uint16_t* const* sumRows, const DustLimits& limits)
      : sums(sumRows),
        tolerance(Unit::Words(limits.tolerance)),
        greatestRegion(Unit::Words(limits.greatestRegion)) {}

  // 0xFFFF for dust.
  [[gnu::always_inline]] Vector Find(std::ptrdiff_t x) const {
    const Vector centre = Unit::Load(sums[kDustReach] + x);
    Vector count = Unit::Words(0);
    Vector isDust = Unit::Words(-1);
    for (int ring = 1; ring <= kDustReach && Unit::IsAny(isDust); ++ring) {
      if (ring == 1) Count(0, 0, x, centre, count);
      for (int side = -ring; side < ring; ++side) {
        Count(-ring, side, x, centre, count);
        Count(side, ring, x, centre, count);
        Count(ring, -side, x, centre, count);
        Count(-side, -ring, x, centre, count);
      }
      isDust = Unit::NotGreater(count, greatestRegion);
    }
    return isDust;
  }

 private:
  [[gnu::always_inline]] void Count(int row, int column, std::ptrdiff_t x, Vector centre,
                                    Vector& count) const {
    const Vector other = Unit::Load(sums[kDustReach + row] + x + column);
    count = Unit::AddOneWhereLess(count, Unit::Distance(centre, other), tolerance);
  }

  const std::uint16_t* const* sums;
  const Vector tolerance, greatestRegion;
};

template <class Unit>
[[maybe_unused]] void FindDustInBlocks(const std::uint16_t* const* sums, int width,
                                       const DustLimits& limits, std::uint8_t* isDust) {
  const DustBlock<Unit> block(sums, limits);
  std::ptrdiff_t x = 0;
  for (; x + Unit::kPixels <= width; x += Unit::kPixels)
    Unit::StoreMarks(isDust + x, block.Find(x));
  if (x == width) return;
  std::uint8_t rest[Unit::kPixels];
  Unit::StoreMarks(rest, block.Find(x));
  for (std::ptrdiff_t i = 0; x + i < width; ++i) isDust[x + i] = rest[i];
}

}  // namespace
}  // namespace kernels
