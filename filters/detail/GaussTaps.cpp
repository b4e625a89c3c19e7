#include "filters/detail/GaussTaps.h"

#include <algorithm>
#include <cmath>

namespace kernels {

double UsedGaussRadius(double radius) {
  constexpr double kLeast = 0.1;
  constexpr double kGreatest = 1000.0;
  return radius >= kLeast ? std::min(radius, kGreatest) : kLeast;
}

double ZoomedGaussRadius(double usedRadius, double zoom) {
  constexpr double kGreatest = 4000.0;
  if (!std::isfinite(zoom)) zoom = 1.0;
  return std::clamp(usedRadius * zoom + (1.0 - zoom) * 0.15, -kGreatest, kGreatest);
}

double WidenedGaussSigma(double usedRadius, int percent) {
  return usedRadius / 2.5 * (std::clamp(percent, 1, 500) / 100.0);
}

GaussTaps MakeGaussTaps(double zoomedRadius, double sigma) {
  constexpr double kNegligible = 1e-12;  // a millionth of what single precision can tell
  const int halfWidth = std::max(1, static_cast<int>(zoomedRadius));
  GaussTaps taps = {1.0f};
  for (int j = 1; j <= halfWidth; ++j) {
    const double tap = std::exp(-0.5 * j * j / (sigma * sigma));
    if (!(tap >= kNegligible)) break;
    taps.push_back(static_cast<float>(tap));
  }
  return taps;
}

void NormalizeGaussTaps(GaussTaps& taps) {
  double sum = taps[0];
  for (std::size_t j = 1; j < taps.size(); ++j) sum += 2.0 * taps[j];
  for (float& tap : taps) tap = static_cast<float>(tap / sum);
}

}  // namespace kernels
