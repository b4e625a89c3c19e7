// The mixer over planes of bytes, which the compiler widens.
//
// Sums are whole floats. For weights of up to kMostWeight altogether they stay below 2^21, and a
// half is far more than the product with the reciprocal rounds away: it truncates to the exact
// quotient.
#pragma once

#include <cstdint>

#include "filters/colour/MixerKernels.h"
#include "filters/pixels/simd/PixelBlocks.h"

namespace kernels {
namespace {

constexpr std::int64_t kMostWeight = 8000;
constexpr std::int64_t kMostConstant = 1 << 22;  // moves any such quotient beyond 0 or 255

constexpr std::int64_t Size(std::int64_t value) {
  return value < 0 ? -value : value;
}

inline bool FitsFloats(const ChannelRecipe& recipe) {
  return Size(recipe.blue) + Size(recipe.green) + Size(recipe.red) <= kMostWeight &&
         Size(recipe.constant) <= kMostConstant;
}

inline bool Same(const ChannelRecipe& a, const ChannelRecipe& b) {
  return a.blue == b.blue && a.green == b.green && a.red == b.red && a.divisor == b.divisor &&
         a.constant == b.constant;
}

[[gnu::always_inline]] inline void MixPlane(const Channels& c, const ChannelRecipe& recipe,
                                            Plane& to) {
  const auto ofBlue = static_cast<float>(recipe.blue);
  const auto ofGreen = static_cast<float>(recipe.green);
  const auto ofRed = static_cast<float>(recipe.red);
  const float share = 1.0f / static_cast<float>(recipe.divisor);
  const auto constant = static_cast<float>(recipe.constant);
  for (int i = 0; i < kPixels; ++i) {
    const float sum = ofBlue * static_cast<float>(c.blue.at[i]) +
                      ofGreen * static_cast<float>(c.green.at[i]) +
                      ofRed * static_cast<float>(c.red.at[i]);
    const float quotient = (sum + __builtin_copysignf(0.5f, sum)) * share;
    const float value = static_cast<float>(static_cast<int>(quotient)) + constant;
    const float atLeast0 = value < 0 ? 0 : value;
    to.at[i] = static_cast<std::uint8_t>(static_cast<int>(atLeast0 > 255 ? 255 : atLeast0));
  }
}

inline void MixLoop(std::uint8_t* colour, int width, const Mixture& mixture) {
  if (!FitsFloats(mixture.blue) || !FitsFloats(mixture.green) || !FitsFloats(mixture.red)) {
    return MixChannels(colour, width, mixture);
  }
  if (Same(mixture.blue, mixture.green) && Same(mixture.blue, mixture.red)) {
    return ChangeChannels(
        colour, width, [&](Channels & c) __attribute__((always_inline)) {
          Plane grey;
          MixPlane(c, mixture.blue, grey);
          c.blue = c.green = c.red = grey;
        });
  }
  ChangeChannels(
      colour, width, [&](Channels & c) __attribute__((always_inline)) {
        const Channels old = c;
        if (!Same(mixture.blue, kKeepBlue)) MixPlane(old, mixture.blue, c.blue);
        if (!Same(mixture.green, kKeepGreen)) MixPlane(old, mixture.green, c.green);
        if (!Same(mixture.red, kKeepRed)) MixPlane(old, mixture.red, c.red);
      });
}

constexpr MixerKernels kMixerLoops = {MixLoop};

}  // namespace
}  // namespace kernels
