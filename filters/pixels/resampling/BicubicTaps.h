// The taps of the bicubic enlargement along one axis.
#pragma once

#include <cstdint>
#include <vector>

namespace kernels {

// Positions between samples are rounded to fiftieths, so that there are this many sets of weights.
inline constexpr int kBicubicPhases = 51;

// Weights of four neighbouring samples, in 4096ths and truncated: their sum is not always 4096, but
// 4090 to 4352.
struct alignas(64) BicubicWeights {
  // Weights 0 and 1 four times, then 2 and 3: what vectors of 16-bit numbers are multiplied by.
  std::int16_t pairs[16];
  std::int32_t weight[4];
  std::int32_t sum;
  float reciprocal;  // of the sum
};
// One a phase.
const BicubicWeights* BicubicPhases();

// An output sample is made of the source samples `index` - 1 to `index` + 2; those outside the
// source count as its first or last one.
struct BicubicTap {
  std::int32_t index;  // in the source
  std::int32_t phase;  // 0 to 50
};
std::vector<BicubicTap> BicubicTaps(int sourceLength, int outputLength);

}  // namespace kernels
