#include "filters/colour/tone/Equalisation.h"

#include <cmath>

namespace kernels {
namespace {

// All levels above 0 times this are white already.
constexpr double kWhiteFactor = 1000.0;

// What makes the same bytes and needs no care: no number gives 0, and the infinite is limited.
double Finite(double factor) {
  return factor > kWhiteFactor ? kWhiteFactor : factor >= 0.0 ? factor : 0.0;
}

}  // namespace

LuminanceFactors EqualisingFactors(const Histogram& histogram, int percent) {
  const double power = percent / 100.0;
  std::array<float, 256> curve;
  float sum = 0.0f;
  for (std::size_t i = 0; i < curve.size(); ++i) {
    if (histogram[i] > 0) sum += static_cast<float>(std::pow(histogram[i], power));
    curve[i] = sum;
  }
  const double scale = 255.0 / sum;
  LuminanceFactors factors = {};
  for (std::size_t i = 1; i < factors.size(); ++i) {
    const auto level = static_cast<float>(curve[i] * scale);
    factors[i] = Finite(level / static_cast<double>(i));
  }
  return factors;
}

}  // namespace kernels
