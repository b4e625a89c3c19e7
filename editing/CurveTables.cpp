#include "editing/CurveTables.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "base/Arithmetic.h"
#include "editing/NaturalSpline.h"

namespace editing {
namespace {

// Writes value to the entries from..end, of which only those that exist.
template <class Value>
void Fill(std::span<std::uint8_t> table, std::int64_t from, std::int64_t end, Value value) {
  end = std::min<std::int64_t>(end, static_cast<std::int64_t>(table.size()) - 1);
  for (std::int64_t i = std::max<std::int64_t>(from, 0); i <= end; ++i) {
    table[static_cast<std::size_t>(i)] = base::TruncateAndClampByte(value(static_cast<double>(i)));
  }
}

void FillLeftOf(const CurveNode& node, ByteTable& table) {
  Fill(table, 0, std::int64_t{node.x} - 1, [&](double) { return node.y; });
}

void FillRightFrom(std::int64_t x, const CurveNode& node, ByteTable& table) {
  Fill(table, x, 255, [&](double) { return node.y; });
}

// A spline between its points.
class Spline {
 public:
  // False when there is none.
  bool Solve(std::span<const CurveNode> nodes) {
    count_ = nodes.size();
    if (count_ > kMostSplinePoints) return false;
    for (std::size_t k = 0; k < count_; ++k) {
      x_[k] = nodes[k].x;
      y_[k] = nodes[k].y;
    }
    return SolveNaturalSpline({x_, count_}, {y_, count_}, {second_, count_});
  }

  double At(double i) const {
    std::size_t k = 1;
    while (k + 1 < count_ && x_[k] < i) ++k;
    const double h = x_[k] - x_[k - 1];
    const double t = (i - x_[k - 1]) / h;
    const double u = 1.0 - t;
    const double bend =
        ((t * t * t - t) * second_[k] + (u * u * u - u) * second_[k - 1]) * (h * h) / 6.0;
    return bend + u * y_[k - 1] + t * y_[k];
  }

 private:
  std::size_t count_ = 0;
  double x_[kMostSplinePoints], y_[kMostSplinePoints], second_[kMostSplinePoints];
};

}  // namespace

ByteTable IdentityTable() {
  ByteTable table;
  for (std::size_t i = 0; i < table.size(); ++i) table[i] = static_cast<std::uint8_t>(i);
  return table;
}

bool WriteSpline(std::span<const CurveNode> nodes, std::span<std::uint8_t> table) {
  Spline spline;
  if (!spline.Solve(nodes)) return false;
  Fill(table, nodes.front().x, nodes.back().x, [&](double i) { return spline.At(i) + 0.5; });
  return true;
}

bool BuildSplineTable(std::span<const CurveNode> nodes, ByteTable& table) {
  if (!WriteSpline(nodes, table)) return false;
  FillLeftOf(nodes.front(), table);
  FillRightFrom(std::int64_t{nodes.back().x} + 1, nodes.back(), table);
  return true;
}

bool BuildLineTable(std::span<const CurveNode> nodes, ByteTable& table) {
  if (nodes.size() < 2) return false;
  FillLeftOf(nodes.front(), table);
  for (std::size_t k = 0; k + 1 < nodes.size(); ++k) {
    const CurveNode& left = nodes[k];
    const CurveNode& right = nodes[k + 1];
    const double width = static_cast<double>(right.x) - left.x;
    // A width of 0 has one entry, in which the slope does not count.
    const double slope = width == 0.0 ? 0.9999 : (static_cast<double>(right.y) - left.y) / width;
    Fill(table, left.x, right.x, [&](double i) { return (i - left.x) * slope + left.y + 0.5; });
  }
  FillRightFrom(nodes.back().x, nodes.back(), table);
  return true;
}

}  // namespace editing
