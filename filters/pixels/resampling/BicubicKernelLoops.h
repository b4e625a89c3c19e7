// Loops of the bicubic enlargement: every file that includes this has a copy of its own, compiled
// for the processors of that file.
#pragma once

#include "filters/pixels/resampling/BicubicKernels.h"

namespace kernels {
namespace {

// The fast kernels divide sums of opaque rows as sum * reciprocal + this, truncated. It stands for
// the half of the divisor that is added and a part of 1: for even and odd divisors up to 4352 the
// result keeps 0.00005 from whole numbers, and single precision takes half of that at most.
constexpr float kRoundingHalf = 0.500055f;

// The 2 of Newton's step to a reciprocal, lowered so that quotients come out below the true ones,
// and up to 256 by less than 1.
constexpr float kTwoAndLess = 2 - 0x1p-20f;

inline std::uint8_t Limited(std::int32_t value) {
  return static_cast<std::uint8_t>(value < 0 ? 0 : value > 255 ? 255 : value);
}

inline void StretchLoop(std::uint8_t* to, const std::uint8_t* from, const BicubicTap* taps,
                        int count) {
  const BicubicWeights* const phases = BicubicPhases();
  for (int i = 0; i < count; ++i, to += 3) {
    const BicubicWeights& by = phases[taps[i].phase];
    const std::uint8_t* const at = from + 3 * static_cast<std::ptrdiff_t>(taps[i].index);
    for (int c = 0; c < 3; ++c) {
      const std::int32_t sum = at[c - 3] * by.weight[0] + at[c] * by.weight[1] +
                               at[c + 3] * by.weight[2] + at[c + 6] * by.weight[3];
      to[c] = Limited((sum + by.sum / 2) / by.sum);
    }
  }
}

// A float holds the sum and the half that is added to the whole number, which outweighs what the
// reciprocal and the product take: the sum stays below 2^21, the divisor below 2^13.
inline void BlendLoop(std::uint8_t* __restrict to, const std::uint8_t* const (&rows)[4],
                      std::size_t bytes, const BicubicWeights& weights) {
  const std::uint8_t* const row0 = rows[0];
  const std::uint8_t* const row1 = rows[1];
  const std::uint8_t* const row2 = rows[2];
  const std::uint8_t* const row3 = rows[3];
  const auto [weight0, weight1, weight2, weight3] = weights.weight;
  const std::int32_t half = weights.sum / 2;
  const float reciprocal = 1.0f / static_cast<float>(weights.sum);
  for (std::size_t i = 0; i < bytes; ++i) {
    const std::int32_t sum =
        row0[i] * weight0 + row1[i] * weight1 + row2[i] * weight2 + row3[i] * weight3 + half;
    const float value = (static_cast<float>(sum < 0 ? 0 : sum) + 0.5f) * reciprocal;
    to[i] = static_cast<std::uint8_t>(static_cast<std::int32_t>(value < 255 ? value : 255));
  }
}

inline void WeighLoop(WeighedPixel* __restrict to, const std::uint8_t* colour,
                      const std::uint8_t* mask, int width) {
  for (int x = 0; x < width; ++x, colour += 3) {
    const int opacity = 255 - mask[x];
    for (int c = 0; c < 3; ++c) to[x].channel[c] = static_cast<std::uint16_t>(colour[c] * opacity);
    to[x].opacity = static_cast<std::uint16_t>(opacity);
  }
}

struct MaskedPixel {
  std::uint8_t channel[3];
  std::uint8_t opacity;
};

// The weights of colours are those of the samples times the opacities, so that what is not there
// gives no colour; `sum` is never 0.
inline MaskedPixel WeighedMean(const WeighedPixel& a, const WeighedPixel& b, const WeighedPixel& c,
                               const WeighedPixel& d, const BicubicWeights& by) {
  const auto weigh = [&by](int first, int second, int third, int fourth) {
    return first * by.weight[0] + second * by.weight[1] + third * by.weight[2] +
           fourth * by.weight[3];
  };
  const std::int32_t opacity = weigh(a.opacity, b.opacity, c.opacity, d.opacity);
  const std::int32_t divisor = opacity == 0 ? 1 : opacity;
  MaskedPixel pixel;
  for (int i = 0; i < 3; ++i) {
    const std::int32_t sum = weigh(a.channel[i], b.channel[i], c.channel[i], d.channel[i]);
    pixel.channel[i] = Limited((divisor / 2 + sum) / divisor);
  }
  pixel.opacity = Limited((by.sum / 2 + opacity) / by.sum);
  return pixel;
}

inline void StretchMaskedLoop(WeighedPixel* to, const WeighedPixel* from, const BicubicTap* taps,
                              int count) {
  const BicubicWeights* const phases = BicubicPhases();
  for (int i = 0; i < count; ++i) {
    const WeighedPixel* const at = from + taps[i].index;
    const MaskedPixel pixel = WeighedMean(at[-1], at[0], at[1], at[2], phases[taps[i].phase]);
    for (int c = 0; c < 3; ++c) {
      to[i].channel[c] = static_cast<std::uint16_t>(pixel.channel[c] * pixel.opacity);
    }
    to[i].opacity = pixel.opacity;
  }
}

inline void BlendMaskedLoop(std::uint8_t* colour, std::uint8_t* mask,
                            const WeighedPixel* const (&rows)[4], int width,
                            const BicubicWeights& weights) {
  for (int x = 0; x < width; ++x, colour += 3) {
    const MaskedPixel pixel = WeighedMean(rows[0][x], rows[1][x], rows[2][x], rows[3][x], weights);
    for (int c = 0; c < 3; ++c) colour[c] = pixel.channel[c];
    mask[x] = static_cast<std::uint8_t>(255 - pixel.opacity);
  }
}

}  // namespace
}  // namespace kernels
