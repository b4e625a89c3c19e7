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

// What the entries say that is added to each channel, and which pixels are recoloured.
struct Shifts {
  Plane blue, green, red, recolours;
};
// The four bytes of each entry together, and then apart.
struct alignas(kVectorBytes) EntryBytes {
  std::uint32_t of[kPixels];
};
[[gnu::always_inline]] inline void FindEntryBytes(const EntryNumbers& numbers,
                                                  const Balance& balance, EntryBytes& bytes) {
  for (int i = 0; i < kPixels; ++i) {
    __builtin_memcpy(&bytes.of[i], balance.entries[numbers.of[i]].shifts, sizeof bytes.of[i]);
  }
}
[[gnu::always_inline]] inline void TakeApart(const EntryBytes& bytes, Shifts& shifts) {
  for (int i = 0; i < kPixels; ++i) {
    const std::uint32_t four = bytes.of[i];
    shifts.blue.at[i] = static_cast<std::uint8_t>(four);
    shifts.green.at[i] = static_cast<std::uint8_t>(four >> 8);
    shifts.red.at[i] = static_cast<std::uint8_t>(four >> 16);
    shifts.recolours.at[i] = static_cast<std::uint8_t>(four >> 24);
  }
}

[[gnu::always_inline]] inline void Shift(Plane& channel, const Plane& by) {
  channel.Set(AddSignedLimited(channel.Get(), by.Get()));
}

[[gnu::always_inline]] inline void Recolour(Hls<Doubles>& colour, const EntryNumbers& numbers,
                                            const Balance& balance, int first) {
  const auto [lightness, saturation] =
      LoadPairs([&](int i) { return &balance.entries[numbers.of[first + i]].lightness; });
  colour.lightness = LimitShare(colour.lightness + lightness);
  colour.saturation = LimitShare(colour.saturation * saturation);
}

// Pixels that are not recoloured keep the bytes that they have.
[[gnu::always_inline]] inline void Recolour(Channels& channels, const EntryNumbers& numbers,
                                            const Balance& balance, const Plane& recolours) {
  const Bytes takes = recolours.Get();
  if (!IsAny(takes)) return;
  Ordered ordered;
  Drawn drawn;
  Hls<Doubles> colours[kVectorsOfBlock];
  DrawnNumbers drawnNumbers;
  Channels changed;
  Order(channels, ordered);
  for (int v = 0; v < kVectorsOfBlock; ++v) colours[v] = ToHls(ordered, v * kLanes<Doubles>);
  for (int v = 0; v < kVectorsOfBlock; ++v) {
    Recolour(colours[v], numbers, balance, v * kLanes<Doubles>);
  }
  for (int v = 0; v < kVectorsOfBlock; ++v) FromHls(colours[v], drawnNumbers, v);
  ToBytes(drawnNumbers, drawn);
  Arrange(drawn, changed);
  channels.blue.Set(Where(takes, changed.blue.Get(), channels.blue.Get()));
  channels.green.Set(Where(takes, changed.green.Get(), channels.green.Get()));
  channels.red.Set(Where(takes, changed.red.Get(), channels.red.Get()));
}

// A few blocks together: what is written in small parts is slow to be read as a whole at once.
constexpr int kBalancedBlocks = 4;
struct BalancedBlock {
  Channels channels;
  EntryNumbers numbers;
  EntryBytes bytes;
};

[[gnu::always_inline]] inline void BalanceBlocks(std::uint8_t* colour, int count,
                                                 const Balance& balance) {
  BalancedBlock blocks[kBalancedBlocks];
  for (int i = 0; i < count; ++i) {
    const std::uint8_t* const at = colour + static_cast<std::size_t>(i) * kBlockBytes;
    Ordered ordered;
    Prefetch(at);
    TakeApart(LoadBlock(at), blocks[i].channels);
    Order(blocks[i].channels, ordered);
    FindEntries(ordered, blocks[i].numbers);
    FindEntryBytes(blocks[i].numbers, balance, blocks[i].bytes);
  }
  for (int i = 0; i < count; ++i) {
    Channels& channels = blocks[i].channels;
    Shifts shifts;
    TakeApart(blocks[i].bytes, shifts);
    Shift(channels.blue, shifts.blue);
    Shift(channels.green, shifts.green);
    Shift(channels.red, shifts.red);
    if (balance.recolours) Recolour(channels, blocks[i].numbers, balance, shifts.recolours);
    StoreBlock(colour + static_cast<std::size_t>(i) * kBlockBytes, PutTogether(channels));
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
