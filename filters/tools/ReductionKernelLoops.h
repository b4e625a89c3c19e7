// Loops of the reduction: every file that includes this has a copy of its own, compiled for the
// processors of that file. All have internal linkage and call no inline function of another header.
#pragma once

#include "filters/tools/ReductionKernels.h"

namespace kernels {
namespace {

inline void SumColoursLoop(const ReductionRun* runs, int count, int, const ReductionRows& rows,
                           ColourSums* sums) {
  for (int i = 0; i < count; ++i) {
    const ReductionRun& run = runs[i];
    ColourSums sum = {};
    for (int y = 0; y < rows.count; ++y) {
      const std::uint8_t* pixel = rows.colour[y] + 3 * static_cast<std::ptrdiff_t>(run.first);
      const std::uint16_t* const weights =
          rows.weights + static_cast<std::size_t>(y) * rows.weightStride + run.weights;
      for (int t = 0; t < run.taps; ++t, pixel += 3) {
        const std::uint32_t weight = weights[t];
        sum.channel[0] += pixel[0] * weight;
        sum.channel[1] += pixel[1] * weight;
        sum.channel[2] += pixel[2] * weight;
      }
    }
    sums[i] = sum;
  }
}

inline void SumMaskedLoop(const ReductionRun* runs, int count, int, const ReductionRows& rows,
                          MaskedSums* sums) {
  for (int i = 0; i < count; ++i) {
    const ReductionRun& run = runs[i];
    MaskedSums sum = {};
    for (int y = 0; y < rows.count; ++y) {
      const std::uint8_t* pixel = rows.colour[y] + 3 * static_cast<std::ptrdiff_t>(run.first);
      const std::uint8_t* const mask = rows.mask[y] + run.first;
      const std::uint16_t* const weights =
          rows.weights + static_cast<std::size_t>(y) * rows.weightStride + run.weights;
      for (int t = 0; t < run.taps; ++t, pixel += 3) {
        const std::uint32_t weight = weights[t];
        sum.opacity += (255u - mask[t]) * weight;
        const std::uint32_t colourWeight = mask[t] == 255 ? 0 : weight;
        sum.colourWeight += colourWeight;
        sum.channel[0] += pixel[0] * colourWeight;
        sum.channel[1] += pixel[1] * colourWeight;
        sum.channel[2] += pixel[2] * colourWeight;
      }
    }
    sums[i] = sum;
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
