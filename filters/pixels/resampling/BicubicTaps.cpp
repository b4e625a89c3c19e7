#include "filters/pixels/resampling/BicubicTaps.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace kernels {
namespace {

double CatmullRom(double x) {
  const double d = std::fabs(x);
  if (d < 1) return 1.5 * d * d * d - 2.5 * d * d + 1;
  if (d < 2) return -0.5 * d * d * d + 2.5 * d * d - 4 * d + 2;
  return 0;
}

BicubicWeights WeightsOf(int phase) {
  const double fraction = phase / 50.0;
  BicubicWeights weights = {};
  for (int t = 0; t < 4; ++t) {
    weights.weight[t] = static_cast<std::int32_t>(CatmullRom(t - 0.5 - fraction) * 4096);
    weights.sum += weights.weight[t];
    for (int copy = 0; copy < 4; ++copy) {
      weights.pairs[t / 2 * 8 + 2 * copy + t % 2] = static_cast<std::int16_t>(weights.weight[t]);
    }
  }
  weights.reciprocal = 1.0f / static_cast<float>(weights.sum);
  return weights;
}

}  // namespace

const BicubicWeights* BicubicPhases() {
  static const auto table = [] {
    std::array<BicubicWeights, kBicubicPhases> weights;
    for (int i = 0; i < kBicubicPhases; ++i) weights[static_cast<std::size_t>(i)] = WeightsOf(i);
    return weights;
  }();
  return table.data();
}

// Positions are single floats: in long rows they fall on few fractions.
std::vector<BicubicTap> BicubicTaps(int sourceLength, int outputLength) {
  const float ratio = static_cast<float>(sourceLength) / static_cast<float>(outputLength);
  std::vector<BicubicTap> taps;
  taps.reserve(static_cast<std::size_t>(outputLength));
  for (int i = 0; i < outputLength; ++i) {
    const float position = (static_cast<float>(i) + 0.5f) * ratio - 0.00001f;
    // Rounding may carry the last position behind the source.
    const int index = std::min(static_cast<int>(position), sourceLength - 1);
    const float fraction = position - static_cast<float>(index);
    taps.push_back({index, std::min(static_cast<int>(fraction * 50 + 0.5f), kBicubicPhases - 1)});
  }
  return taps;
}

}  // namespace kernels
