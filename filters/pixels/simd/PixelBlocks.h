// Colour rows in blocks of as many pixels as a vector has bytes: for fast kernels alone.
#pragma once

#include "filters/pixels/simd/MaskedRow.h"
#include "filters/pixels/simd/Vectors.h"

namespace kernels {
namespace {

constexpr int kPixels = kVectorBytes;  // of a block
constexpr std::size_t kBlockBytes = 3 * kPixels;

// Fetches what a block further on in the row will need: the processor's own look-ahead stops at
// each page. Behind the row it does no harm. No loop and no call: GCC takes either for one without
// effect.
[[gnu::always_inline]] inline void Prefetch(const std::uint8_t* block) {
  const std::uint8_t* const at = block + 3072;
  __builtin_prefetch(at);
  __builtin_prefetch(at + 64);
  if constexpr (kBlockBytes > 128) __builtin_prefetch(at + 128);
}

[[gnu::always_inline]] inline Block LoadBlock(const std::uint8_t* at) {
  return {Load<Bytes>(at), Load<Bytes>(at + kVectorBytes), Load<Bytes>(at + 2 * kVectorBytes)};
}

[[gnu::always_inline]] inline void StoreBlock(std::uint8_t* at, const Block& block) {
  Store(at, block.part0);
  Store(at + kVectorBytes, block.part1);
  Store(at + 2 * kVectorBytes, block.part2);
}

// Bytes of two planes side by side as numbers of 16 bits, a quarter of the pixels in each vector.
// Packs bring the pixels back in order.
struct BytePairs {
  Shorts quarters[4];
};
[[gnu::always_inline]] inline BytePairs PairUp(Bytes even, Bytes odd) {
  const Bytes low = UnpackLow(even, odd);
  const Bytes high = UnpackHigh(even, odd);
  const Bytes none = {};
  return {(Shorts)UnpackLow(low, none), (Shorts)UnpackHigh(low, none),
          (Shorts)UnpackLow(high, none), (Shorts)UnpackHigh(high, none)};
}
// numbers(i) gives those of a quarter, which are limited to 0..255.
template <class Numbers>
[[gnu::always_inline]] inline Bytes PackQuarters(const Numbers& numbers) {
  return Pack((Words)Pack(numbers(0), numbers(1)), (Words)Pack(numbers(2), numbers(3)));
}

// Changes a row block by block; the last pixels go through a block aside.
template <class Change>
[[gnu::always_inline]] inline void ChangeRow(std::uint8_t* colour, int width,
                                             const Change& change) {
  for (; width >= kPixels; width -= kPixels, colour += kBlockBytes) {
    Prefetch(colour);
    StoreBlock(colour, change(LoadBlock(colour)));
  }
  if (width <= 0) return;
  std::uint8_t rest[kBlockBytes] = {};
  const std::size_t bytes = 3 * static_cast<std::size_t>(width);
  __builtin_memcpy(rest, colour, bytes);
  StoreBlock(rest, change(LoadBlock(rest)));
  __builtin_memcpy(colour, rest, bytes);
}

// The same with a mask row beside it, from one place to another, which may be the same one:
// change(block, masks) changes both.
template <class Change>
[[gnu::always_inline]] inline void ChangeBlockWithMasks(const MaskedRow& to,
                                                        const GivenMaskedRow& from,
                                                        const Change& change) {
  Block block = LoadBlock(from.colour);
  auto masks = Load<Bytes>(from.mask);
  change(block, masks);
  StoreBlock(to.colour, block);
  Store(to.mask, masks);
}
template <class Change>
[[gnu::always_inline]] inline void ChangeRowWithMasks(MaskedRow to, GivenMaskedRow from, int width,
                                                      const Change& change) {
  for (; width >= kPixels; width -= kPixels) {
    Prefetch(from.colour);
    __builtin_prefetch(from.mask + 1024);
    ChangeBlockWithMasks(to, from, change);
    to.colour += kBlockBytes, to.mask += kPixels;
    from.colour += kBlockBytes, from.mask += kPixels;
  }
  if (width <= 0) return;
  const auto pixels = static_cast<std::size_t>(width);
  std::uint8_t colours[kBlockBytes] = {};
  std::uint8_t masks[kPixels] = {};
  __builtin_memcpy(colours, from.colour, 3 * pixels);
  __builtin_memcpy(masks, from.mask, pixels);
  ChangeBlockWithMasks({colours, masks}, {colours, masks}, change);
  __builtin_memcpy(to.colour, colours, 3 * pixels);
  __builtin_memcpy(to.mask, masks, pixels);
}

// --- Blocks in memory, for loops over single pixels that the compiler widens.

// Makes the compiler write what it would keep in registers, where it is then read in small parts:
// to take those out of vectors is slower.
template <class Object>
[[gnu::always_inline]] inline void WriteToMemory(Object& object) {
  asm("" : "+m"(object));
}

// One byte for each pixel of a block.
struct alignas(kVectorBytes) Plane {
  std::uint8_t at[kPixels];

  [[gnu::always_inline]] void Set(Bytes bytes) { Store(at, bytes); }
  [[gnu::always_inline]] Bytes Get() const { return Load<Bytes>(at); }
};

struct Channels {
  Plane blue, green, red;
};

[[gnu::always_inline]] inline void TakeApart(const Block& block, Channels& channels) {
  const Planes planes = Split(block);
  channels.blue.Set(planes.blue);
  channels.green.Set(planes.green);
  channels.red.Set(planes.red);
}

[[gnu::always_inline]] inline Block PutTogether(const Channels& channels) {
  return Join({channels.blue.Get(), channels.green.Get(), channels.red.Get()});
}

// Changes a row block by block: change(channels) works on the channels of a block in place.
template <class Change>
[[gnu::always_inline]] inline void ChangeChannels(std::uint8_t* colour, int width,
                                                  const Change& change) {
  ChangeRow(
      colour, width, [&](const Block& block) __attribute__((always_inline)) {
        Channels channels;
        TakeApart(block, channels);
        change(channels);
        return PutTogether(channels);
      });
}

// (151 green + 77 red + 28 blue) / 256 of each pixel. The weights sum to 256, so that 16 bits hold
// the sum.
[[gnu::always_inline]] inline void Luminances(const Channels& c, Plane& luminance) {
  for (int i = 0; i < kPixels; ++i) {
    const auto sum =
        static_cast<std::uint16_t>(151 * c.green.at[i] + 77 * c.red.at[i] + 28 * c.blue.at[i]);
    luminance.at[i] = static_cast<std::uint8_t>(sum >> 8);
  }
}

}  // namespace
}  // namespace kernels
