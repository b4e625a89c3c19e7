#include "filters/geometry/rotation/RotationGeometry.h"

#include <cmath>
#include <cstdlib>
#include <numbers>
#include <utility>

#include "base/Arithmetic.h"

namespace kernels {
namespace {

constexpr double kPi = std::numbers::pi;

std::int16_t WrapToInt16(std::int64_t value) {
  return static_cast<std::int16_t>(value);
}

// Away from zero to the next even number.
std::int64_t EvenReach(double reach) {
  const auto whole = static_cast<std::int64_t>(reach > 0 ? std::ceil(reach) : std::floor(reach));
  return whole + whole % 2;
}

// The rest of the angle between -45 and 45 degrees; counts the quarter turns. Whole turns are taken
// off by a remainder, which is exact.
double TakeQuarterTurns(double degrees, int& quarterTurns) {
  double rest = std::fmod(degrees, 360.0);
  if (rest < -45) rest += 360;
  for (quarterTurns = 0; rest > 45; rest -= 90) ++quarterTurns;
  quarterTurns %= 4;
  return rest;
}

struct Move {
  std::int16_t whole;
  double rest;
};

Move SplitMove(double move) {
  const double whole = std::trunc(move);
  return {WrapToInt16(base::TruncateToInt32(whole)), move - whole};
}

void ComputeShift(RotationGeometry& g, double degrees, std::int64_t centerX, std::int64_t centerY,
                  int width, int height) {
  const double cosine = std::cos(degrees * kPi / 180);
  const double sine = std::sin(degrees * kPi / 180);
  const double cx = WrapToInt16(width / 2 + centerX);
  const double cy = WrapToInt16(height / 2 + centerY);
  const double halfW = width * 0.5;
  const double halfH = height * 0.5;
  const double u = cx - halfW;
  const double v = cy - halfH;
  double x = cosine * u - sine * v + halfW - cx;
  double y = cosine * v + sine * u + halfH - cy;
  if (g.quarterTurns % 2 == 1) {
    x += halfH - halfW;
    y += halfW - halfH;
  }
  const Move moveX = SplitMove(x);
  const Move moveY = SplitMove(y);
  g.shiftX = moveX.whole;
  g.restX = moveX.rest;
  g.shiftY = moveY.whole;
  g.restY = moveY.rest;
}

void ComputeShears(RotationGeometry& g, double radians) {
  const int marginX = g.isQuarterTurn ? 0 : 2 * kTurnMarginX;
  const int marginY = g.isQuarterTurn ? 0 : 2 * kTurnMarginY;
  const auto w = static_cast<double>(g.turnedWidth);
  const auto h = static_cast<double>(g.turnedHeight);
  g.rowShear = -std::tan(radians / 2);
  g.columnShear = std::sin(radians);
  g.rowReach = EvenReach((h - 1) * g.rowShear);
  const std::int64_t rowReach = std::abs(g.rowReach);
  g.columnReach = EvenReach(static_cast<double>(rowReach - 1 + g.turnedWidth) * g.columnShear);
  const std::int64_t columnReach = std::abs(g.columnReach);

  const double cosine = std::cos(radians);
  const double sine = std::fabs(std::sin(radians));
  g.width = static_cast<std::int64_t>(std::ceil(h * sine + w * cosine)) + marginX;
  g.height = static_cast<std::int64_t>(std::ceil(h * cosine + w * sine)) + marginY;
  g.cutX = rowReach + (g.turnedWidth - g.width + marginX) / 2;
  g.cutY = columnReach / 2 + (g.turnedHeight - g.height + marginY) / 2;
}

}  // namespace

std::int64_t RotationGeometry::PlaceX() const {
  return std::abs(rowReach) / 2 + kTurnMarginX - cutX;
}

std::int64_t RotationGeometry::PlaceY() const {
  return std::abs(columnReach) / 2 + kTurnMarginY - cutY;
}

std::int16_t RotationGeometry::MapX(int x) const {
  const int margin = isQuarterTurn ? 0 : kTurnMarginX;
  return WrapToInt16(std::abs(rowReach) + shiftX - cutX + x + margin);
}

std::int16_t RotationGeometry::MapY(int y) const {
  const int margin = isQuarterTurn ? 0 : kTurnMarginY;
  return WrapToInt16(std::abs(columnReach) / 2 + shiftY - cutY + y + margin);
}

RotationGeometry ComputeRotation(double degrees, int centerX, int centerY, int width, int height) {
  RotationGeometry g;
  double hundredths = std::floor(degrees * 100 + 0.5);
  if (!std::isfinite(hundredths)) hundredths = 0;
  const double angle = hundredths / 100;
  g.isQuarterTurn = std::fmod(hundredths, 9000.0) == 0;
  double rest = TakeQuarterTurns(angle, g.quarterTurns);
  if (g.isQuarterTurn) rest = 0;  // angles too large for fractions may leave one
  g.turnedWidth = width;
  g.turnedHeight = height;
  if (g.quarterTurns % 2 == 1) std::swap(g.turnedWidth, g.turnedHeight);
  ComputeShift(g, angle, centerX, centerY, width, height);
  ComputeShears(g, rest * (kPi / 180));
  return g;
}

}  // namespace kernels
