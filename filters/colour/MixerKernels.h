// Channels mixed from all three, on plain rows.
//
// Rows and widths as in PointKernels.h.
#pragma once

#include <cstdint>

#include "filters/pixels/simd/Simd.h"

namespace kernels {

// What becomes of a channel: the weighted sum over the divisor, truncated, and the constant added.
// Limited to 0..255.
struct ChannelRecipe {
  std::int32_t blue = 0, green = 0, red = 0;
  std::int64_t divisor = 100;  // above 0
  std::int64_t constant = 0;

  bool operator==(const ChannelRecipe&) const = default;
};

inline constexpr ChannelRecipe kKeepBlue = {.blue = 100};
inline constexpr ChannelRecipe kKeepGreen = {.green = 100};
inline constexpr ChannelRecipe kKeepRed = {.red = 100};

// All three work with the old values.
struct Mixture {
  ChannelRecipe blue = kKeepBlue, green = kKeepGreen, red = kKeepRed;
};

void MixChannels(std::uint8_t* colour, int width, const Mixture& mixture);

// The same function, byte for byte, at the speed of a vector unit.
struct MixerKernels {
  decltype(&MixChannels) mix;

  // For Choose.
  static const MixerKernels& Plain();
  static const MixerKernels& Avx2();
  static const MixerKernels& Avx512();
};

}  // namespace kernels
