// Loops of the reduction: every file that includes this has a copy of its own, compiled for the
// processors of that file.
#pragma once

#include "filters/pixels/resampling/ReductionKernels.h"

namespace kernels {
namespace {

inline const std::uint16_t* WeightsOf(const ReductionRows& rows, const ReductionRun& run, int y) {
  return rows.weights + static_cast<std::size_t>(y) * rows.weightStride + run.weights;
}

// Adds the taps of a run. `mask` is null in opaque pictures.
inline void AddTaps(const std::uint8_t* pixel, const std::uint8_t* mask,
                    const std::uint16_t* weights, int taps, ColourSums& sum) {
  for (int t = 0; t < taps; ++t, pixel += 3) {
    const std::uint32_t weight = mask && mask[t] == 255 ? 0 : weights[t];
    sum.channel[0] += pixel[0] * weight;
    sum.channel[1] += pixel[1] * weight;
    sum.channel[2] += pixel[2] * weight;
    sum.weight += weight;
  }
}

inline void SumColoursLoop(const ReductionRun* runs, int count, int, const ReductionRows& rows,
                           ColourSums* sums) {
  for (int i = 0; i < count; ++i) {
    const ReductionRun& run = runs[i];
    const std::ptrdiff_t first = run.first;
    ColourSums sum = {};
    for (int y = 0; y < rows.count; ++y) {
      AddTaps(rows.colour[y] + 3 * first, nullptr, WeightsOf(rows, run, y), run.taps, sum);
    }
    sums[i] = sum;
  }
}

inline void SumMaskedLoop(const ReductionRun* runs, int count, int, const ReductionRows& rows,
                          ColourSums* sums, std::uint32_t* opacities) {
  for (int i = 0; i < count; ++i) {
    const ReductionRun& run = runs[i];
    const std::ptrdiff_t first = run.first;
    ColourSums sum = {};
    std::uint32_t opacity = 0;
    for (int y = 0; y < rows.count; ++y) {
      const std::uint8_t* const mask = rows.mask[y] + first;
      const std::uint16_t* const weights = WeightsOf(rows, run, y);
      AddTaps(rows.colour[y] + 3 * first, mask, weights, run.taps, sum);
      for (int t = 0; t < run.taps; ++t) opacity += (255u - mask[t]) * weights[t];
    }
    sums[i] = sum;
    opacities[i] = opacity;
  }
}

inline void DivideLoop(std::uint8_t* colour, const ColourSums* sums, int count) {
  for (int i = 0; i < count; ++i, colour += 3) {
    const std::uint32_t weight = sums[i].weight;
    for (int c = 0; c < 3; ++c) {
      const std::uint32_t quotient = weight == 0 ? 0 : (sums[i].channel[c] + weight / 2) / weight;
      colour[c] = static_cast<std::uint8_t>(quotient);
    }
  }
}

// Weights of ratios from 0 to 1 leave products in 32 bits; a ratio below 0 needs more.
template <class Number>
inline std::uint8_t Sharpened(Number centre, Number neighbours, Number centreWeight,
                              Number crossWeight) {
  const Number value = (centre * centreWeight + neighbours * crossWeight) >> 16;
  return static_cast<std::uint8_t>(value < 0 ? 0 : value > 255 ? 255 : value);
}

template <class Number>
inline void SharpenAs(std::uint8_t* __restrict to, int bytes, const SharpenRows& rows,
                      SharpenWeights weights) {
  const auto centreWeight = static_cast<Number>(weights.centre);
  const auto crossWeight = static_cast<Number>(weights.cross);
  const std::uint8_t* const above = rows.above;
  const std::uint8_t* const centre = rows.centre;
  const std::uint8_t* const below = rows.below;
  for (int i = 0; i < bytes; ++i) {
    const int neighbours = centre[i - 3] + centre[i + 3] + above[i] + below[i];
    to[i] = Sharpened<Number>(centre[i], neighbours, centreWeight, crossWeight);
  }
}

template <class Number>
inline void SharpenMaskedAs(std::uint8_t* __restrict to, int bytes, const SharpenRows& rows,
                            SharpenWeights weights) {
  const auto centreWeight = static_cast<Number>(weights.centre);
  const auto crossWeight = static_cast<Number>(weights.cross);
  const std::uint8_t* const above = rows.above;
  const std::uint8_t* const centre = rows.centre;
  const std::uint8_t* const below = rows.below;
  const std::uint8_t* const maskAbove = rows.maskAbove;
  const std::uint8_t* const mask = rows.maskCentre;
  const std::uint8_t* const maskBelow = rows.maskBelow;
  for (int i = 0; i < bytes; ++i) {
    const int own = centre[i];
    const int neighbours =
        (mask[i - 3] == 255 ? own : centre[i - 3]) + (mask[i + 3] == 255 ? own : centre[i + 3]) +
        (maskAbove[i] == 255 ? own : above[i]) + (maskBelow[i] == 255 ? own : below[i]);
    const std::uint8_t sharp = Sharpened<Number>(own, neighbours, centreWeight, crossWeight);
    to[i] = mask[i] == 255 ? centre[i] : sharp;
  }
}

constexpr std::int64_t kMost32BitWeight = 1 << 20;

inline bool Fits32Bits(SharpenWeights weights) {
  return weights.centre <= kMost32BitWeight && weights.cross >= -kMost32BitWeight;
}

inline void SharpenLoop(std::uint8_t* to, int bytes, const SharpenRows& rows,
                        SharpenWeights weights) {
  if (Fits32Bits(weights)) return SharpenAs<std::int32_t>(to, bytes, rows, weights);
  SharpenAs<std::int64_t>(to, bytes, rows, weights);
}

inline void SharpenMaskedLoop(std::uint8_t* to, int bytes, const SharpenRows& rows,
                              SharpenWeights weights) {
  if (Fits32Bits(weights)) return SharpenMaskedAs<std::int32_t>(to, bytes, rows, weights);
  SharpenMaskedAs<std::int64_t>(to, bytes, rows, weights);
}

}  // namespace
}  // namespace kernels
