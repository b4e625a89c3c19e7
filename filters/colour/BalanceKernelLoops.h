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

// Adds what the entries say. A fourth byte of each shift is overwritten by the next pixel.
[[gnu::always_inline]] inline Block Shifted(const Block& block, const EntryNumbers& numbers,
                                            const Balance& balance) {
  alignas(kVectorBytes) std::uint8_t shifts[kBlockBytes + kVectorBytes];
  for (int i = 0; i < kPixels; ++i) {
    __builtin_memcpy(shifts + 3 * i, balance.entries[numbers.of[i]].shifts, 4);
  }
  const Block added = LoadBlock(shifts);
  return {AddSignedLimited(block.part0, added.part0), AddSignedLimited(block.part1, added.part1),
          AddSignedLimited(block.part2, added.part2)};
}

[[gnu::always_inline]] inline void Recolour(Hls<Doubles>& colour, const EntryNumbers& numbers,
                                            const Balance& balance, int first) {
  double lightness[kLanes<Doubles>], saturation[kLanes<Doubles>];
  for (int i = 0; i < kLanes<Doubles>; ++i) {
    const BalanceEntry& entry = balance.entries[numbers.of[first + i]];
    lightness[i] = entry.lightness;
    saturation[i] = entry.saturation;
  }
  colour.lightness = LimitShare(colour.lightness + Load<Doubles>(lightness));
  colour.saturation = LimitShare(colour.saturation * Load<Doubles>(saturation));
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
  TakeApart(block, channels);
  Order(channels, ordered);
  for (int i = 0; i < kPixels; i += kLanes<Doubles>) {
    Hls<Doubles> colour = ToHls(ordered, i);
    Recolour(colour, numbers, balance, i);
    FromHls(colour, drawn, i);
  }
  Arrange(drawn, channels);
  const Block changed = PutTogether(channels);
  const Block taken = Spread(takes.Get());
  return {Where(taken.part0, changed.part0, block.part0),
          Where(taken.part1, changed.part1, block.part1),
          Where(taken.part2, changed.part2, block.part2)};
}

inline void BalanceLoop(std::uint8_t* colour, int width, const Balance& balance) {
  ChangeRow(
      colour, width, [&](const Block& block) __attribute__((always_inline)) {
        Channels channels;
        Ordered ordered;
        EntryNumbers numbers;
        TakeApart(block, channels);
        Order(channels, ordered);
        FindEntries(ordered, numbers);
        const Block shifted = Shifted(block, numbers, balance);
        return balance.recolours ? Recoloured(shifted, numbers, balance) : shifted;
      });
}

constexpr BalanceKernels kBalanceLoops = {BalanceLoop};

}  // namespace
}  // namespace kernels
