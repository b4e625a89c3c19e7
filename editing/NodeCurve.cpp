#include "editing/NodeCurve.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

#include "base/Arithmetic.h"
#include "core/Diagnostics.h"

namespace {

using editing::CurveNode;

constexpr int kLogLevel = 5;  // for who asks for every line
constexpr int kMost = 255;

// a + b * factor / divisor, truncated. Nothing is added where the range is empty.
std::int32_t AddScaled(std::int64_t a, std::int64_t b, std::int64_t factor, std::int64_t divisor) {
  return base::WrapToInt32(divisor == 0 ? a : a + b * factor / divisor);
}

double SquaredDistance(double dx, double dy) {
  return dx * dx + dy * dy;
}

// Moves a value to the limit; false when it was there already.
bool Move(std::int32_t& value, std::int64_t limit) {
  const std::int32_t before = std::exchange(value, base::WrapToInt32(limit));
  return value != before;
}

}  // namespace

void RCNodeCurve::Insert(int index, CurveNode node) {
  nodes.insert(nodes.begin() + index, node);
}

int RCNodeCurve::InsertAfter(int index) {
  if (Count() >= mostNodes || index > mostNodes || Count() < 2) return kRefused;
  const int added = std::clamp(index, 0, Count() - 2) + 1;
  const CurveNode& before = At(added - 1);
  const CurveNode& behind = At(added);
  const CurveNode middle = {AddScaled(0, std::int64_t{before.x} + behind.x, 1, 2),
                            AddScaled(0, std::int64_t{before.y} + behind.y, 1, 2)};
  Insert(added, middle);
  core::LogLine(kLogLevel, "Node %d inserted @ x = %d, y = %d\n", added, middle.x, middle.y);
  return added;
}

int RCNodeCurve::InsertAt(int x, int y) {
  if (Count() >= mostNodes || x > kMost) return kRefused;
  const auto behind =
      std::find_if(nodes.begin(), nodes.end(), [x](const CurveNode& node) { return node.x >= x; });
  const auto isNear = [&](const CurveNode& node) {
    return std::abs(std::int64_t{node.x} - x) < spacing;
  };
  const bool isInside = behind != nodes.begin() && behind != nodes.end();
  const bool isTaken = behind != nodes.end() && behind->x == x;
  if (isTaken || (isInside && (isNear(*behind) || isNear(*(behind - 1))))) return kRefused;
  current = static_cast<int>(behind - nodes.begin());
  Insert(current, {x, base::ClampByte(y)});
  core::LogLine(kLogLevel, "Node %d (base 1) inserted @ x = %d, y = %d\n", current + 1, x,
                At(current).y);
  return current;
}

int RCNodeCurve::Remove(int index) {
  if (Count() < 3) return kRefused;
  const int removed = std::clamp(index, 1, Count() - 2);
  const CurveNode node = At(removed);
  nodes.erase(nodes.begin() + removed);
  current = std::min(current, Count() - 1);
  core::LogLine(kLogLevel, "Node %d removed @ x = %d, y = %d\n", removed, node.x, node.y);
  return removed;
}

double RCNodeCurve::SquaredGap(int index) const {
  const CurveNode& a = At(index);
  const CurveNode& b = At(index + 1);
  return SquaredDistance(static_cast<double>(b.x) - a.x, static_cast<double>(b.y) - a.y);
}

int RCNodeCurve::LargestGap() const {
  if (Count() <= 2) return Count() < 2 ? kRefused : 0;
  int found = 0;
  for (int i = 1; i + 1 < Count(); ++i) {
    if (SquaredGap(i) > SquaredGap(found)) found = i;
  }
  core::LogLine(kLogLevel, "Largest Spacing = %d after node  %d (zero based)\n",
                base::TruncateToInt32(std::sqrt(SquaredGap(found))), found);
  return found;
}

int RCNodeCurve::SmallestGap() const {
  if (Count() <= 2) return Count() < 2 ? kRefused : 0;
  int found = 1;
  for (int i = 2; i + 1 < Count(); ++i) {
    if (SquaredGap(i) < SquaredGap(found)) found = i;
  }
  core::LogLine(kLogLevel, "Smallest Spacing = %d after node  %d\n",
                base::TruncateToInt32(std::sqrt(SquaredGap(found))), found);
  return found;
}

bool RCNodeCurve::Constrain(int index) {
  if (!Has(index)) return false;
  CurveNode& node = At(index);
  if (node.x < 0) return Move(node.x, 0);
  if (node.x > kMost) return Move(node.x, kMost);
  if (node.y < 0) return Move(node.y, 0);
  if (node.y > kMost) return Move(node.y, kMost);
  if (Has(index + 1)) {
    const std::int64_t limit = std::int64_t{At(index + 1).x} - spacing;
    if (node.x > limit) return Move(node.x, limit);
  }
  if (index > 0) {
    const std::int64_t limit = std::int64_t{At(index - 1).x} + spacing;
    if (node.x < limit) return Move(node.x, limit);
  }
  return false;
}

void RCNodeCurve::Mirror(int index, MirrorKind kind) {
  if (!Has(index)) return;
  CurveNode& node = At(index);
  const auto opposite = [](std::int32_t value) {
    return base::WrapToInt32(std::int64_t{kMost} - value);
  };
  switch (kind) {
    case MirrorKind::TopDown:
      node.y = opposite(node.y);
      break;
    case MirrorKind::LeftRight:
      node.x = opposite(node.x);
      break;
    case MirrorKind::AcrossFallingDiagonal:
      node = {opposite(node.y), opposite(node.x)};
      break;
    case MirrorKind::AcrossRisingDiagonal:
      std::swap(node.x, node.y);
      break;
  }
}

int RCNodeCurve::Sort(SortBy by) {
  const auto member = by == SortBy::X ? &CurveNode::x : &CurveNode::y;
  int swaps = 0;
  for (int end = Count() - 1; end > 0; --end) {
    for (int i = 0; i < end; ++i) {
      if (At(i).*member <= At(i + 1).*member) continue;
      std::swap(At(i), At(i + 1));
      ++swaps;
    }
  }
  return swaps;
}

void RCNodeCurve::Reverse(ReverseMode mode) {
  for (int i = 0; i < Count() / 2; ++i) {
    CurveNode& first = At(i);
    CurveNode& last = At(Count() - 1 - i);
    if (mode != ReverseMode::YAlone) std::swap(first.x, last.x);
    if (mode != ReverseMode::XAlone) std::swap(first.y, last.y);
  }
}

void RCNodeCurve::SpreadNodes(bool flip) {
  const int gaps = Count() - 1;
  for (int i = 0; i <= gaps; ++i) {
    const std::int32_t y = AddScaled(bottom, i, std::int64_t{top} - bottom, gaps);
    At(i) = {AddScaled(left, i, std::int64_t{right} - left, gaps),
             flip ? base::WrapToInt32(std::int64_t{top} + bottom - y) : y};
  }
}

int RCNodeCurve::GetX(int index) const {
  return index < 0 ? 0 : Has(index) ? At(index).x : kMost;
}

int RCNodeCurve::GetY(int index) const {
  return index < 0 ? 0 : Has(index) ? At(index).y : kMost;
}

void RCNodeCurve::SetX(int index, int value) {
  if (Has(index)) At(index).x = base::ClampByte(value);
}

void RCNodeCurve::SetY(int index, int value) {
  if (Has(index)) At(index).y = base::ClampByte(value);
}

RCNodeCurve::Point RCNodeCurve::ToScreen(Point curve, bool transposed) const {
  if (transposed) std::swap(curve.x, curve.y);
  const std::int64_t height = std::int64_t{top} - bottom;
  return {AddScaled(origin.x, std::int64_t{right} - left, curve.x, kMost),
          AddScaled(origin.y + height, -height, curve.y, kMost)};
}

RCNodeCurve::Point RCNodeCurve::FromScreen(Point screen, bool transposed) const {
  Point curve = {
      AddScaled(0, std::int64_t{screen.x} - origin.x, kMost, std::int64_t{right} - left),
      AddScaled(kMost, std::int64_t{origin.y} - screen.y, kMost, std::int64_t{top} - bottom)};
  if (transposed) std::swap(curve.x, curve.y);
  return curve;
}

int RCNodeCurve::HitTest(int x, int y, bool transposed) const {
  int found = kRefused;
  double nearest = SquaredDistance(hitRadius, 0);
  for (int i = 0; i < Count(); ++i) {
    const Point node = ToScreen({At(i).x, At(i).y}, transposed);
    const double distance =
        SquaredDistance(static_cast<double>(node.x) - x, static_cast<double>(node.y) - y);
    if (distance < nearest || (found == kRefused && distance == nearest)) {
      found = i;
      nearest = distance;
    }
  }
  return found;
}

bool RCNodeCurve::RecalculateSpline() {
  return editing::WriteSpline(nodes, splineTable);
}

std::string RCNodeCurve::Dump(bool show) const {
  std::string lines;
  for (int i = 0; i < Count(); ++i) {
    char line[64];
    std::snprintf(line, sizeof line, "Node %2d: x = %3d, y = %3d\n", i, At(i).x, At(i).y);
    lines += line;
  }
  if (show) core::ShowLines(lines, "RCNodeCurve");
  return lines;
}
