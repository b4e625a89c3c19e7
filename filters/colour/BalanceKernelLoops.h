// The colour balance over vectors of any width.
#pragma once

#include <cstdint>

#include "filters/colour/BalanceKernels.h"
#include "filters/pixels/HlsKernelLoops.h"

namespace kernels {
namespace {

// The entries of a block's pixels.
struct EntryNumbers {
  std::int32_t of[kPixels];
};

[[gnu::always_inline]] inline void FindEntries(const Ordered& ordered, EntryNumbers& numbers) {
  for (int i = 0; i < kPixels; i += kLanes<Doubles>) {
    const auto span = ShareAt(ordered.high.at + i) - ShareAt(ordered.low.at + i);
    const auto grey = All<Doubles>(kGreyEntry);
    StoreTruncated(numbers.of + i, span == 0.0 ? grey : HueOf(ordered, span, i));
  }
}

// What the entries say that is added. A fourth byte of each pixel is overwritten by the next one.
struct Shifts {
  alignas(kVectorBytes) std::uint8_t at[kBlockBytes + kVectorBytes];
};
[[gnu::always_inline]] inline void FindShifts(const EntryNumbers& numbers, const Balance& balance,
                                              Shifts& shifts) {
  for (int i = 0; i < kPixels; ++i) {
    __builtin_memcpy(shifts.at + 3 * i, balance.entries[numbers.of[i]].shifts, 4);
  }
}

[[gnu::always_inline]] inline Block Shifted(const Block& block, const Shifts& shifts) {
  const Block added = LoadBlock(shifts.at);
  return {AddSignedLimited(block.part0, added.part0), AddSignedLimited(block.part1, added.part1),
          AddSignedLimited(block.part2, added.part2)};
}

[[gnu::always_inline]] inline void Recolour(Hls<Doubles>& colour, const EntryNumbers& numbers,
                                            const Balance& balance, int first) {
  const auto [lightness, saturation] =
      LoadPairs([&](int i) { return &balance.entries[numbers.of[first + i]].lightness; });
  colour.lightness = LimitShare(colour.lightness + lightness);
  colour.saturation = LimitShare(colour.saturation * saturation);
}

// Pixels that are not recoloured keep the bytes that they have.
[[gnu::always_inline]] inline Block Recoloured(const Block& block, const EntryNumbers& numbers,
                                               const Balance& balance) {
  Plane takes;
  for (int i = 0; i < kPixels; ++i) takes.at[i] = MaskIf(balance.entries[numbers.of[i]].recolours);
  if (!IsAny(takes.Get())) return block;
  Channels channels;
  Ordered ordered;
  Drawn drawn;
  DrawnNumbers drawnNumbers;
  TakeApart(block, channels);
  Order(channels, ordered);
  for (int v = 0; v < kVectorsOfBlock; ++v) {
    Hls<Doubles> colour = ToHls(ordered, v * kLanes<Doubles>);
    Recolour(colour, numbers, balance, v * kLanes<Doubles>);
    FromHls(colour, drawnNumbers, v);
  }
  ToBytes(drawnNumbers, drawn);
  Arrange(drawn, channels);
  const Block changed = PutTogether(channels);
  const Block taken = Spread(takes.Get());
  return {Where(taken.part0, changed.part0, block.part0),
          Where(taken.part1, changed.part1, block.part1),
          Where(taken.part2, changed.part2, block.part2)};
}

// A few blocks together: what is written in small parts is slow to be read as a whole at once.
constexpr int kBalancedBlocks = 4;

[[gnu::always_inline]] inline void BalanceBlocks(std::uint8_t* colour, int count,
                                                 const Balance& balance) {
  EntryNumbers numbers[kBalancedBlocks];
  Shifts shifts[kBalancedBlocks];
  for (int i = 0; i < count; ++i) {
    std::uint8_t* const at = colour + static_cast<std::size_t>(i) * kBlockBytes;
    Channels channels;
    Ordered ordered;
    Prefetch(at);
    TakeApart(LoadBlock(at), channels);
    Order(channels, ordered);
    FindEntries(ordered, numbers[i]);
    FindShifts(numbers[i], balance, shifts[i]);
  }
  for (int i = 0; i < count; ++i) {
    std::uint8_t* const at = colour + static_cast<std::size_t>(i) * kBlockBytes;
    const Block shifted = Shifted(LoadBlock(at), shifts[i]);
    StoreBlock(at, balance.recolours ? Recoloured(shifted, numbers[i], balance) : shifted);
  }
}

inline void BalanceLoop(std::uint8_t* colour, int width, const Balance& balance) {
  constexpr int kTogether = kBalancedBlocks * kPixels;
  for (; width >= kTogether; width -= kTogether, colour += kBalancedBlocks * kBlockBytes) {
    BalanceBlocks(colour, kBalancedBlocks, balance);
  }
  if (width <= 0) return;
  std::uint8_t rest[kBalancedBlocks * kBlockBytes] = {};
  const std::size_t bytes = 3 * static_cast<std::size_t>(width);
  __builtin_memcpy(rest, colour, bytes);
  BalanceBlocks(rest, (width + kPixels - 1) / kPixels, balance);
  __builtin_memcpy(colour, rest, bytes);
}

constexpr BalanceKernels kBalanceLoops = {BalanceLoop};

}  // namespace
}  // namespace kernels
