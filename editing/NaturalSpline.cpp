#include "editing/NaturalSpline.h"

#include <algorithm>

namespace editing {

bool SolveNaturalSpline(std::span<const double> x, std::span<const double> y,
                        std::span<double> secondDerivatives) {
  if (x.size() < 2 || x.size() > kMostSplinePoints) return false;
  const std::size_t last = x.size() - 1;
  const auto width = [x](std::size_t i) { return x[i + 1] - x[i]; };
  const auto slope = [&](std::size_t i) { return (y[i + 1] - y[i]) / width(i); };
  for (std::size_t i = 0; i < last; ++i) {
    if (width(i) == 0.0 || (i + 2 <= last && x[i + 2] == x[i])) return false;
  }

  // Each inner point has a row: what stands beside the diagonal are the widths of its intervals.
  const std::span<double> right = secondDerivatives;
  double diagonal[kMostSplinePoints];
  std::fill(right.begin(), right.end(), 0.0);
  for (std::size_t i = 1; i < last; ++i) {
    diagonal[i] = 2.0 * (x[i + 1] - x[i - 1]);
    right[i] = 6.0 * (slope(i) - slope(i - 1));
  }
  for (std::size_t i = 2; i < last; ++i) {
    const double share = width(i - 1) / diagonal[i - 1];
    diagonal[i] -= share * width(i - 1);
    right[i] -= share * right[i - 1];
  }
  for (std::size_t i = last - 1; i > 0 && i < last; --i) {
    right[i] = (right[i] - width(i) * right[i + 1]) / diagonal[i];
  }
  return true;
}

}  // namespace editing
