// The loop of the mixer over planes of bytes, which the compiler widens: every file that includes
// this has a copy of its own, compiled for the processors of that file.
//
// Sums are whole floats. For weights of up to kMostWeight altogether they stay below 2^21, and a
// half is far more than the product with the reciprocal rounds away: it truncates to the exact
// quotient. `Wide` walks along a row by ChangePlanes.
#pragma once

#include <cstdint>

#include "filters/colour/MixerKernels.h"
#include "filters/pixels/simd/WideDoubles.h"

namespace kernels {
namespace {

constexpr std::int64_t kMostWeight = 8000;
constexpr std::int64_t kMostConstant = 1 << 22;  // moves any such quotient beyond 0 or 255

constexpr std::int64_t Magnitude(std::int64_t value) {
  return value < 0 ? -value : value;
}

inline bool FitsFloats(const ChannelRecipe& recipe) {
  return Magnitude(recipe.blue) + Magnitude(recipe.green) + Magnitude(recipe.red) <= kMostWeight &&
         Magnitude(recipe.constant) <= kMostConstant;
}

inline bool Same(const ChannelRecipe& a, const ChannelRecipe& b) {
  return a.blue == b.blue && a.green == b.green && a.red == b.red && a.divisor == b.divisor &&
         a.constant == b.constant;
}

template <class Wide>
[[gnu::always_inline]] inline void MixPlane(const Plane<Wide>& blue, const Plane<Wide>& green,
                                            const Plane<Wide>& red, const ChannelRecipe& recipe,
                                            Plane<Wide>& to) {
  const auto ofBlue = static_cast<float>(recipe.blue);
  const auto ofGreen = static_cast<float>(recipe.green);
  const auto ofRed = static_cast<float>(recipe.red);
  const float share = 1.0f / static_cast<float>(recipe.divisor);
  const auto constant = static_cast<float>(recipe.constant);
  for (int i = 0; i < Wide::kPixels; ++i) {
    const float sum = ofBlue * static_cast<float>(blue.bytes[i]) +
                      ofGreen * static_cast<float>(green.bytes[i]) +
                      ofRed * static_cast<float>(red.bytes[i]);
    const float quotient = (sum + __builtin_copysignf(0.5f, sum)) * share;
    const float value = static_cast<float>(static_cast<int>(quotient)) + constant;
    const float atLeast0 = value < 0 ? 0 : value;
    to.bytes[i] = static_cast<std::uint8_t>(static_cast<int>(atLeast0 > 255 ? 255 : atLeast0));
  }
}

template <class Wide>
inline void MixLoop(std::uint8_t* colour, int width, const Mixture& mixture) {
  if (!FitsFloats(mixture.blue) || !FitsFloats(mixture.green) || !FitsFloats(mixture.red)) {
    return MixChannels(colour, width, mixture);
  }
  using Bytes = Plane<Wide>;
  if (Same(mixture.blue, mixture.green) && Same(mixture.blue, mixture.red)) {
    return Wide::template ChangePlanes<Wide>(
        colour,
        width, [&](Bytes & blue, Bytes & green, Bytes & red) __attribute__((always_inline)) {
          Bytes grey;
          MixPlane(blue, green, red, mixture.blue, grey);
          blue = green = red = grey;
        });
  }
  Wide::template ChangePlanes<Wide>(
      colour, width, [&](Bytes & blue, Bytes & green, Bytes & red) __attribute__((always_inline)) {
        const Bytes oldBlue = blue, oldGreen = green, oldRed = red;
        if (!Same(mixture.blue, kKeepBlue)) MixPlane(oldBlue, oldGreen, oldRed, mixture.blue, blue);
        if (!Same(mixture.green, kKeepGreen)) {
          MixPlane(oldBlue, oldGreen, oldRed, mixture.green, green);
        }
        if (!Same(mixture.red, kKeepRed)) MixPlane(oldBlue, oldGreen, oldRed, mixture.red, red);
      });
}

}  // namespace
}  // namespace kernels
