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
    const Hls<Doubles> colour = ToHls(ordered, i);
    const auto grey = All<Doubles>(kGreyEntry);
    StoreTruncated(numbers.of + i, colour.saturation == 0.0 ? grey : colour.hue);
  }
}

// Adds to one channel what the entries say.
[[gnu::always_inline]] inline void AddShifts(Plane& plane, const EntryNumbers& numbers,
                                             const Balance& balance,
                                             std::int16_t BalanceEntry::*shift) {
  alignas(kVectorBytes) std::int16_t shifts[kPixels];
  for (int i = 0; i < kPixels; ++i) shifts[i] = balance.entries[numbers.of[i]].*shift;
  for (int i = 0; i < kPixels; ++i) {
    const auto sum = static_cast<std::int16_t>(plane.at[i] + shifts[i]);
    plane.at[i] = static_cast<std::uint8_t>(sum < 0 ? 0 : sum > 255 ? 255 : sum);
  }
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
[[gnu::always_inline]] inline void RecolourBlock(Channels& c, const EntryNumbers& numbers,
                                                 const Balance& balance) {
  std::uint8_t takes[kPixels];
  int taken = 0;
  for (int i = 0; i < kPixels; ++i) {
    takes[i] = MaskIf(balance.entries[numbers.of[i]].recolours);
    taken += takes[i];
  }
  if (taken == 0) return;
  Ordered ordered;
  Drawn drawn;
  Order(c, ordered);
  for (int i = 0; i < kPixels; i += kLanes<Doubles>) {
    Hls<Doubles> colour = ToHls(ordered, i);
    Recolour(colour, numbers, balance, i);
    FromHls(colour, drawn, i);
  }
  Channels changed;
  Arrange(drawn, changed);
  for (int i = 0; i < kPixels; ++i) {
    c.blue.at[i] = takes[i] ? changed.blue.at[i] : c.blue.at[i];
    c.green.at[i] = takes[i] ? changed.green.at[i] : c.green.at[i];
    c.red.at[i] = takes[i] ? changed.red.at[i] : c.red.at[i];
  }
}

inline void BalanceLoop(std::uint8_t* colour, int width, const Balance& balance) {
  ChangeChannels(
      colour, width, [&](Channels & c) __attribute__((always_inline)) {
        Ordered ordered;
        EntryNumbers numbers;
        Order(c, ordered);
        FindEntries(ordered, numbers);
        AddShifts(c.blue, numbers, balance, &BalanceEntry::blue);
        AddShifts(c.green, numbers, balance, &BalanceEntry::green);
        AddShifts(c.red, numbers, balance, &BalanceEntry::red);
        RecolourBlock(c, numbers, balance);
      });
}

constexpr BalanceKernels kBalanceLoops = {BalanceLoop};

}  // namespace
}  // namespace kernels
