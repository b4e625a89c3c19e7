#include "filters/pixels/resampling/ReductionWindows.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "base/Arithmetic.h"

namespace kernels {
namespace {

// How fast weights fall off: the exponent at a distance of one output pixel.
constexpr double kFallOff = 5.0;

std::int16_t Offset16(int offset) {
  return static_cast<std::int16_t>(offset);
}

std::uint16_t WeightIndex(double distance) {
  const double index = distance * distance * kFallOff * 1024;
  return static_cast<std::uint16_t>(index < kLargestWeightIndex ? index : kLargestWeightIndex);
}

}  // namespace

const std::uint16_t* ReductionWeights() {
  static const auto weights = [] {
    std::array<std::uint16_t, 2 * kLargestWeightIndex + 1> table;
    table.fill(1);
    for (int k = 0; k < kLargestWeightIndex; ++k) {
      table[static_cast<std::size_t>(k)] =
          static_cast<std::uint16_t>(std::exp(-k / 1024.0) * 65535);
    }
    return table;
  }();
  return weights.data();
}

std::int32_t OutputStart(int sourceLength, int outputLength, int offset) {
  const double ratio = static_cast<double>(outputLength) / sourceLength;
  return base::TruncateToInt32(-std::floor(-Offset16(offset) * ratio + 0.5));
}

ReductionAxis::ReductionAxis(int sourceLength, int outputLength, int offset) {
  const double ratio = static_cast<double>(outputLength) / sourceLength;
  const double inverse = 1.0 / ratio;
  const std::int64_t origin = Offset16(offset);
  const std::int64_t start = OutputStart(sourceLength, outputLength, offset);
  windows_.reserve(static_cast<std::size_t>(outputLength));
  indices_.reserve(
      2 * (static_cast<std::size_t>(sourceLength) + static_cast<std::size_t>(outputLength)));
  for (int i = 0; i < outputLength; ++i) {
    const auto at = static_cast<double>(i - start);
    const auto low = static_cast<std::int64_t>(std::floor((at - 0.5) * inverse));
    const auto high = static_cast<std::int64_t>(std::ceil((at + 1.5) * inverse));
    const std::int64_t first = low + origin;
    const std::int64_t count = high - low;
    ReductionWindow window;
    window.first = first;
    window.count = static_cast<int>(count);
    window.insideFirst = static_cast<int>(std::max<std::int64_t>(first, 0) - first);
    window.insideEnd =
        static_cast<int>(std::min<std::int64_t>(first + count - 1, sourceLength - 1) - first + 1);
    window.indices = indices_.size();
    for (std::int64_t t = 0; t < count; ++t) {
      indices_.push_back(WeightIndex((static_cast<double>(low + t) + 0.5) * ratio - (at + 0.5)));
    }
    widest_ = std::max(widest_, window.count);
    windows_.push_back(window);
  }
}

}  // namespace kernels
