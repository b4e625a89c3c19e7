// The luminance kernels over vectors of any width.
//
// A block is taken apart into channels; the loops over them are the compiler's to widen. Every
// number comes out as LuminanceKernels.cpp makes it, with the same operations in the same order.
#pragma once

#include <cstddef>
#include <cstdint>

#include "filters/pixels/LuminanceKernels.h"
#include "filters/pixels/simd/PixelBlocks.h"

namespace kernels {
namespace {

inline void LuminanceLoop(std::uint8_t* to, const std::uint8_t* colour, int width) {
  Channels channels;
  Plane luminance;
  for (; width >= kPixels; width -= kPixels, colour += kBlockBytes, to += kPixels) {
    TakeApart(LoadBlock(colour), channels);
    Luminances(channels, luminance);
    Store(to, luminance.Get());
  }
  Luminance(to, colour, width);
}

// Limited after the truncation: what lies between -1 and 0 becomes 0 either way.
[[gnu::always_inline]] inline std::uint8_t LimitByte(float value) {
  const int whole = static_cast<int>(value);
  const int above = whole < 0 ? 0 : whole;
  return static_cast<std::uint8_t>(above > 255 ? 255 : above);
}

inline void ReplaceLuminanceLoop(std::uint8_t* colour, int width, const ByteTable& table) {
  const ByteLookup lookUp(table);
  ChangeChannels(
      colour, width, [&](Channels & c) __attribute__((always_inline)) {
        Plane luminance;
        Luminances(c, luminance);
        luminance.Set(lookUp(luminance.Get()));
        for (int k = 0; k < kPixels; ++k) {
          const float r = c.red.at[k];
          const float g = c.green.at[k];
          const float b = c.blue.at[k];
          const float y = luminance.at[k];
          const float i = 0.596f * r - 0.275f * g - 0.321f * b;
          const float q = 0.212f * r - 0.523f * g + 0.311f * b;
          c.red.at[k] = LimitByte(y + 0.955688f * i + 0.619858f * q);
          c.green.at[k] = LimitByte(y - 0.271582f * i - 0.646874f * q);
          c.blue.at[k] = LimitByte(y - 1.108177f * i + 1.705065f * q);
        }
      });
}

// An index that the compiler knows nothing of: what it makes of several at once is slower than one
// load after the other.
[[gnu::always_inline]] inline std::size_t OneByOne(std::size_t index) {
  asm("" : "+r"(index));
  return index;
}

// Multiplies each level by its factor, rounds and limits to 255.
[[gnu::always_inline]] inline Bytes Scaled(const Plane& levels, const double* factors) {
  return BytesOf([&](int i) __attribute__((always_inline)) {
    return Min(LoadDoubles(levels.at + i) * Load<Doubles>(factors + i) + 0.5, All<Doubles>(255));
  });
}

inline void ScaleByLuminanceLoop(std::uint8_t* colour, int width, const LuminanceFactors& factors) {
  const auto* const factorOf = reinterpret_cast<const double*>(&factors);
  ChangeChannels(
      colour, width, [&](Channels & c) __attribute__((always_inline)) {
        Plane luminance;
        Luminances(c, luminance);
        alignas(64) double factor[kPixels];
#pragma GCC unroll 8
        for (int i = 0; i < kPixels; ++i) {
          factor[i] = factorOf[OneByOne(luminance.at[i])];
        }
        c.blue.Set(Scaled(c.blue, factor));
        c.green.Set(Scaled(c.green, factor));
        c.red.Set(Scaled(c.red, factor));
      });
}

// For moves that fit bytes. 49345 / 2^22 is close enough to 1 / 85 for products of two bytes.
[[gnu::always_inline]] inline void Move(Plane& channel, const Plane& grey, const ByteLookup& sizes,
                                        bool raises) {
  Plane size;
  size.Set(sizes(channel.Get()));
  const auto sign = static_cast<std::uint8_t>(raises ? 0 : 255);
  for (int i = 0; i < kPixels; ++i) {
    const std::uint8_t level = channel.at[i];
    const auto distance =
        static_cast<std::uint8_t>(level > grey.at[i] ? level - grey.at[i] : grey.at[i] - level);
    const auto product = static_cast<std::uint16_t>(distance * size.at[i]);
    const auto parts = static_cast<std::uint16_t>(product * 49345u >> 16);  // of 64
    const auto way = static_cast<std::uint8_t>(parts >> 6);
    // Turning all bits and taking off the sign negates.
    channel.at[i] = static_cast<std::uint8_t>(level + (way ^ sign) - sign);
  }
}

inline void MoveFromGreyLoop(std::uint8_t* colour, int width, const GreyMoves& moves) {
  if (!moves.blue.fitsBytes || !moves.green.fitsBytes || !moves.red.fitsBytes) {
    return MoveFromGrey(colour, width, moves);
  }
  const ByteLookup blue(moves.blue.size);
  const ByteLookup green(moves.green.size);
  const ByteLookup red(moves.red.size);
  ChangeChannels(
      colour, width, [&](Channels & c) __attribute__((always_inline)) {
        Plane grey;
        for (int i = 0; i < kPixels; ++i) {
          // 21846 / 2^16 is close enough to 1 / 3 for sums of three bytes.
          const auto sum = static_cast<std::uint16_t>(c.blue.at[i] + c.green.at[i] + c.red.at[i]);
          grey.at[i] = static_cast<std::uint8_t>(sum * 21846u >> 16);
        }
        Move(c.blue, grey, blue, moves.blue.raises);
        Move(c.green, grey, green, moves.green.raises);
        Move(c.red, grey, red, moves.red.raises);
      });
}

constexpr LuminanceKernelTable kLuminanceLoops = {LuminanceLoop, ReplaceLuminanceLoop,
                                                  ScaleByLuminanceLoop, MoveFromGreyLoop};

}  // namespace
}  // namespace kernels
