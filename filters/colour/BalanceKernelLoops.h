// The loop of the colour balance over vectors of any width: every file that includes this has a
// copy of its own, compiled for the processors of that file.
//
// `Wide` is as in HlsKernelLoops.h, with StoreWhole(at, doubles), which truncates to ints, and
// Gather(numbers), which makes a vector of as many doubles as it has lanes.
#pragma once

#include <cstdint>

#include "filters/colour/BalanceKernels.h"
#include "filters/pixels/HlsKernelLoops.h"

namespace kernels {
namespace {

// The entries of a block's pixels.
template <class Wide>
struct alignas(64) EntryNumbers {
  int of[Wide::kPixels];
};

template <class Wide>
[[gnu::always_inline]] inline void FindEntries(const Ordered<Wide>& ordered,
                                               EntryNumbers<Wide>& numbers) {
  for (int i = 0; i < Wide::kPixels; i += Wide::kLanes) {
    const Hls<Wide> colour = ToHls(ordered, i);
    const auto grey = Wide::Set(kGreyEntry);
    Wide::StoreWhole(numbers.of + i, colour.saturation == 0.0 ? grey : colour.hue);
  }
}

// Adds to one channel what the entries say.
template <class Wide>
[[gnu::always_inline]] inline void AddShifts(Plane<Wide>& plane, const EntryNumbers<Wide>& numbers,
                                             const Balance& balance,
                                             std::int16_t BalanceEntry::*shift) {
  alignas(64) std::int16_t shifts[Wide::kPixels];
  for (int i = 0; i < Wide::kPixels; ++i) shifts[i] = balance.entries[numbers.of[i]].*shift;
  for (int i = 0; i < Wide::kPixels; ++i) {
    const auto sum = static_cast<std::int16_t>(plane.bytes[i] + shifts[i]);
    plane.bytes[i] = static_cast<std::uint8_t>(sum < 0 ? 0 : sum > 255 ? 255 : sum);
  }
}

template <class Wide>
[[gnu::always_inline]] inline void Recolour(Hls<Wide>& colour, const EntryNumbers<Wide>& numbers,
                                            const Balance& balance, int first) {
  double lightness[Wide::kLanes], saturation[Wide::kLanes];
  for (int i = 0; i < Wide::kLanes; ++i) {
    const BalanceEntry& entry = balance.entries[numbers.of[first + i]];
    lightness[i] = entry.lightness;
    saturation[i] = entry.saturation;
  }
  colour.lightness = LimitShare<Wide>(colour.lightness + Wide::Gather(lightness));
  colour.saturation = LimitShare<Wide>(colour.saturation * Wide::Gather(saturation));
}

// Pixels that are not recoloured keep the bytes that they have.
template <class Wide>
[[gnu::always_inline]] inline void RecolourBlock(Plane<Wide>& blue, Plane<Wide>& green,
                                                 Plane<Wide>& red,
                                                 const EntryNumbers<Wide>& numbers,
                                                 const Balance& balance) {
  std::uint8_t takes[Wide::kPixels];
  int taken = 0;
  for (int i = 0; i < Wide::kPixels; ++i) {
    takes[i] = MaskIf(balance.entries[numbers.of[i]].recolours);
    taken += takes[i];
  }
  if (taken == 0) return;
  Ordered<Wide> ordered;
  Drawn<Wide> drawn;
  Order(blue, green, red, ordered);
  for (int i = 0; i < Wide::kPixels; i += Wide::kLanes) {
    Hls<Wide> colour = ToHls(ordered, i);
    Recolour(colour, numbers, balance, i);
    FromHls(colour, drawn, i);
  }
  Plane<Wide> newBlue, newGreen, newRed;
  Arrange(drawn, newBlue, newGreen, newRed);
  for (int i = 0; i < Wide::kPixels; ++i) {
    blue.bytes[i] = takes[i] ? newBlue.bytes[i] : blue.bytes[i];
    green.bytes[i] = takes[i] ? newGreen.bytes[i] : green.bytes[i];
    red.bytes[i] = takes[i] ? newRed.bytes[i] : red.bytes[i];
  }
}

template <class Wide>
inline void BalanceLoop(std::uint8_t* colour, int width, const Balance& balance) {
  using Bytes = Plane<Wide>;
  Wide::template ChangePlanes<Wide>(
      colour, width, [&](Bytes & blue, Bytes & green, Bytes & red) __attribute__((always_inline)) {
        Ordered<Wide> ordered;
        EntryNumbers<Wide> numbers;
        Order(blue, green, red, ordered);
        FindEntries(ordered, numbers);
        AddShifts(blue, numbers, balance, &BalanceEntry::blue);
        AddShifts(green, numbers, balance, &BalanceEntry::green);
        AddShifts(red, numbers, balance, &BalanceEntry::red);
        RecolourBlock(blue, green, red, numbers, balance);
      });
}

}  // namespace
}  // namespace kernels
