#include "filters/frames/RoundCorners.h"

#include <algorithm>
#include <cmath>

#include "base/Rows.h"

namespace kernels {
namespace {

// The quarter of a circle that bulges toward the origin, from (0, radius) to (radius, 0).
class Arc {
 public:
  explicit Arc(double r) : radius(r) {}

  // The arc at a distance from one axis, as the distance from the other: its own inverse.
  double At(double t) const {
    if (t >= radius) return 0;
    const double along = radius - t;
    return radius - std::sqrt(radius * radius - along * along);
  }
  // Where it crosses the diagonal.
  double Middle() const { return radius - std::sqrt(radius * radius * 0.5); }

  // The area behind the arc with `first` <= t <= `last` and `low` <= other axis <= `high`. The arc
  // is at most as steep as the diagonal there.
  double AreaBehind(double first, double last, double low, double high) const {
    if (first >= last || low >= high) return 0;
    const double enters = std::clamp(At(high), first, last);
    const double leaves = std::clamp(At(low), enters, last);
    return high * (leaves - enters) - Integral(enters, leaves) + (high - low) * (last - leaves);
  }

 private:
  // Five points after Gauss; the pieces are a pixel wide at most and nearly straight.
  double Integral(double from, double to) const {
    constexpr double kPlaces[] = {0.5384693101056831, 0.9061798459386640};
    constexpr double kWeights[] = {0.4786286704993665, 0.2369268850561891};
    constexpr double kMiddleWeight = 0.5688888888888889;
    const double middle = (from + to) * 0.5;
    const double half = (to - from) * 0.5;
    double sum = kMiddleWeight * At(middle);
    for (int i = 0; i < 2; ++i) {
      sum += kWeights[i] * (At(middle - half * kPlaces[i]) + At(middle + half * kPlaces[i]));
    }
    return sum * half;
  }

  double radius;
};

std::uint8_t Covered(std::uint8_t mask, double share) {
  return static_cast<std::uint8_t>(255 - static_cast<int>((255 - mask) * share));
}

}  // namespace

double ShareUnderCircle(double left, double right, double low, double high, double radius) {
  const Arc arc(radius);
  // Beside the diagonal the arc runs more along one axis than along the other: each half is walked
  // along its own.
  const double middle = arc.Middle();
  const double flat = arc.AreaBehind(std::max(left, middle), right, low, high);
  const double steep = arc.AreaBehind(std::max(low, middle), high, left, std::min(right, middle));
  return std::clamp((flat + steep) / ((right - left) * (high - low)), 0.0, 1.0);
}

void RoundCornersOfRow(std::uint8_t* mask, int width, int height, int radius, int y) {
  if (radius < 1 || radius > width || radius > height) return;
  const int fromEdge = std::min(y, height - 1 - y);
  if (fromEdge >= radius) return;
  const Arc arc(radius);
  const double low = fromEdge;
  // A pixel on a middle line belongs to two quarters: half of it is measured, for both.
  const double high = std::min(low + 1, height * 0.5);
  const int quarter = (width + 1) / 2;
  const int outside = std::min(quarter, static_cast<int>(arc.At(high)));
  const int inside = std::min(quarter, static_cast<int>(std::ceil(arc.At(low))));
  std::fill_n(mask, outside, base::kNothing);
  std::fill_n(mask + width - outside, outside, base::kNothing);
  for (int x = outside; x < inside; ++x) {
    const double right = std::min(x + 1.0, width * 0.5);
    const double share = ShareUnderCircle(x, right, low, high, radius);
    const int mirrored = width - 1 - x;
    mask[x] = Covered(mask[x], share);
    if (mirrored != x) mask[mirrored] = Covered(mask[mirrored], share);
  }
}

void RoundCorners(std::uint8_t* const* maskRows, int width, int height, int radius) {
  for (int y = 0; y < height; ++y) RoundCornersOfRow(maskRows[y], width, height, radius, y);
}

}  // namespace kernels
