#include "filters/text/Outline.h"

#include <algorithm>
#include <cmath>

#include "base/Arithmetic.h"

namespace text {
namespace {

constexpr std::int64_t kTenths = 3600;  // of a full turn
constexpr std::int64_t kQuarter = kTenths / 4;
constexpr double kPi = 3.14159265358979323846;

// sin(x) for first 1, cos(x) for first 0, by their series; exact to the last bits up to a right
// angle's half.
double Series(double x, int first) {
  double term = first == 1 ? x : 1.0;
  double sum = term;
  for (int n = first + 1; n < 24; n += 2) {
    term = -term * x * x / (static_cast<double>(n) * (n + 1));
    sum += term;
  }
  return sum;
}

std::int64_t FloorToPixel(std::int64_t units) {
  return units >= 0 ? units / kUnit : -((-units + kUnit - 1) / kUnit);
}

int Pixel(std::int64_t pixel) {
  return base::LimitToInt32(pixel);
}

}  // namespace

Turn Turn::ByTenths(std::int64_t tenths) {
  const std::int64_t whole = ((tenths % kTenths) + kTenths) % kTenths;
  // The nearest quarter turn, and what is left, at most an eighth either way.
  const std::int64_t quarters = (whole + kQuarter / 2) / kQuarter;
  const double rest = static_cast<double>(whole - quarters * kQuarter) * (kPi / 1800.0);
  const double c = Series(rest, 0);
  const double s = Series(rest, 1);
  switch (quarters % 4) {
    case 0:
      return {c, s};
    case 1:
      return {-s, c};
    case 2:
      return {-c, -s};
    default:
      return {s, -c};
  }
}

Point Turn::operator()(Point point) const {
  if (IsNone()) return point;
  const auto x = static_cast<double>(point.x);
  const auto y = static_cast<double>(point.y);
  return {static_cast<std::int64_t>(std::floor(x * cosine - y * sine + 0.5)),
          static_cast<std::int64_t>(std::floor(x * sine + y * cosine + 0.5))};
}

std::int64_t Box::Area() const {
  return IsEmpty() ? 0 : (std::int64_t{right} - left) * (std::int64_t{top} - bottom);
}

Box Box::CutTo(const Box& other) const {
  return {std::max(left, other.left), std::max(bottom, other.bottom), std::min(right, other.right),
          std::min(top, other.top)};
}

Box Box::MovedBy(std::int64_t x, std::int64_t y) const {
  return {Pixel(left + x), Pixel(bottom + y), Pixel(right + x), Pixel(top + y)};
}

Outline Turned(const Outline& outline, const Turn& turn) {
  Outline turned = outline;
  for (Point& point : turned.points) point = turn(point);
  return turned;
}

Box BoxOf(const Outline& outline, Point offset) {
  if (outline.points.empty()) return {};
  const auto [left, right] = std::minmax_element(outline.points.begin(), outline.points.end(),
                                                 [](Point a, Point b) { return a.x < b.x; });
  const auto [bottom, top] = std::minmax_element(outline.points.begin(), outline.points.end(),
                                                 [](Point a, Point b) { return a.y < b.y; });
  return {Pixel(FloorToPixel(left->x + offset.x)), Pixel(FloorToPixel(bottom->y + offset.y)),
          Pixel(FloorToPixel(right->x + offset.x + kUnit - 1)),
          Pixel(FloorToPixel(top->y + offset.y + kUnit - 1))};
}

}  // namespace text
