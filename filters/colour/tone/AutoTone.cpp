#include "filters/colour/tone/AutoTone.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "base/Arithmetic.h"

namespace kernels {
namespace {

// The counts of a range of levels, as far as there are such levels, each weighted.
template <class Weight>
std::uint64_t WeightedSum(const Histogram& histogram, int first, int end, Weight weight) {
  std::uint64_t sum = 0;
  for (int i = std::max(first, 0); i < std::min(end, 256); ++i) {
    sum += std::uint64_t{histogram[static_cast<std::size_t>(i)]} * static_cast<unsigned>(weight(i));
  }
  return sum;
}

// What is no number gives the least.
int TruncateWithin(int least, int most, double value) {
  if (!(value > least)) return least;
  return value < most ? base::TruncateToInt32(value) : most;
}

}  // namespace

Limits LimitsByHand(int low, int fromWhite) {
  constexpr std::int64_t kGreatest = std::numeric_limits<int>::max();
  return {low, static_cast<int>(std::min(255 - std::int64_t{fromWhite}, kGreatest))};
}

Limits CorrectLimits(const Limits& found, int raiseLow, int lowerHigh) {
  return {
      static_cast<int>(std::clamp<std::int64_t>(std::int64_t{found.low} + raiseLow, 0, 125)),
      static_cast<int>(std::clamp<std::int64_t>(std::int64_t{found.high} - lowerHigh, 130, 255))};
}

int EstimateMidtone(const Histogram& luminance, const Limits& limits, std::int64_t pixels) {
  const std::uint64_t sum =
      WeightedSum(luminance, 0, std::min(limits.low, 255) + 1, [](int) { return 1; }) +
      WeightedSum(luminance, std::min(limits.low, 255) + 1, limits.high,
                  [](int i) { return i + 1; }) +
      WeightedSum(luminance, limits.high, 256, [](int) { return 256; });
  const auto mean =
      static_cast<float>(static_cast<double>(sum) / static_cast<double>(pixels) - 1.0);
  constexpr int kMeant = 100;
  const int above = TruncateWithin(kMeant - 70, kMeant + 125, mean + 0.5) - kMeant;
  const double gamma = above > 0 ? 1.0 + 2.0 * above / 125.0 : 1.0 - 0.5 * above / -70.0;
  if (gamma > 1.0) return TruncateWithin(-100, 0, (1.0 - gamma) * 50.0);
  if (gamma < 1.0) return TruncateWithin(0, 100, (1.0 - gamma) * 200.0);
  return 0;
}

ByteTable BuildMidtoneTable(int midtone) {
  const double exponent = 1.0 - midtone / (midtone >= 0 ? 200.0 : 50.0);
  ByteTable table;
  for (std::size_t i = 0; i < table.size(); ++i) {
    const double level = 255.0 * std::pow(static_cast<double>(i) / 255.0, exponent) + 0.5;
    table[i] = base::TruncateToByte(std::clamp(level, 0.0, 255.0));
  }
  return table;
}

}  // namespace kernels
