// The search for dust over vectors of any width, and the sums that it compares.
#pragma once

#include <cstddef>
#include <cstdint>

#include "filters/detail/DustKernels.h"
#include "filters/pixels/simd/PixelBlocks.h"

namespace kernels {
namespace {

inline void AddChannelsInBlocks(const std::uint8_t* colour, int width, std::uint16_t* sums) {
  for (; width >= kPixels; width -= kPixels, colour += kBlockBytes, sums += kPixels) {
    Prefetch(colour);
    Channels c;
    TakeApart(LoadBlock(colour), c);
    for (int i = 0; i < kPixels; ++i) {
      sums[i] = static_cast<std::uint16_t>(c.blue.at[i] + c.green.at[i] + c.red.at[i]);
    }
  }
  DustKernelTable::Plain().addChannels(colour, width, sums);
}

// Counts for a block of pixels at once, ring by ring from the middle, until all have more pixels
// like themselves than dust has. In a photograph that is mostly so within the first ring.
class DustBlock {
 public:
  // A sum is less than the tolerance t away from another where t - 1 plus their difference, without
  // a sign, is less than 2 t - 1. The compared numbers have one, so both are lowered by 2^15.
  DustBlock(const std::uint16_t* const* sumRows, const DustLimits& limits)
      : sums(sumRows),
        raise(All<Words>(limits.tolerance - 1 - (1 << 15))),
        limit(All<Shorts>((limits.tolerance > 0 ? 2 * limits.tolerance - 1 : 0) - (1 << 15))),
        greatestRegion(All<Shorts>(limits.greatestRegion)) {}

  // All bits for dust.
  [[gnu::always_inline]] Shorts Find(std::ptrdiff_t x) const {
    const Words centre = Load<Words>(sums[kDustReach] + x) + raise;
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
  [[gnu::always_inline]] void Count(int row, int column, std::ptrdiff_t x, Words centre,
                                    Words& count) const {
    const Words apart = centre - Load<Words>(sums[kDustReach + row] + x + column);
    count = AddOneWhereLess(count, (Shorts)apart, limit);
  }

  const std::uint16_t* const* sums;
  const Words raise;
  const Shorts limit, greatestRegion;
};

inline void FindDustInBlocks(const std::uint16_t* const* sums, int width, const DustLimits& limits,
                             std::uint8_t* isDust) {
  constexpr std::ptrdiff_t kSums = kLanes<Shorts>;
  using Marks [[gnu::vector_size(kSums)]] = std::uint8_t;
  const DustBlock block(sums, limits);
  const auto find = [&block](std::ptrdiff_t x) __attribute__((always_inline)) {
    return __builtin_convertvector(block.Find(x), Marks);
  };
  std::ptrdiff_t x = 0;
  for (; x + kSums <= width; x += kSums) Store(isDust + x, find(x));
  if (x == width) return;
  const Marks rest = find(x);
  __builtin_memcpy(isDust + x, &rest, static_cast<std::size_t>(width - x));
}

}  // namespace
}  // namespace kernels
