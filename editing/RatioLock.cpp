#include "editing/RatioLock.h"

#include <algorithm>

#include "base/Arithmetic.h"

namespace editing {
namespace {

// Moves a centre so that half of a side fits on both of its sides.
double Inside(double centre, double half) {
  return std::min(std::max(centre, half), 1 - half);
}

}  // namespace

void LockRatio(double ratio, double pictureWidth, double pictureHeight, CropEdges& edges) {
  if (!(ratio > 0)) return;
  const double wide = std::max(edges.right - edges.left, 0.0);
  const double high = std::max(edges.top - edges.bottom, 0.0001);
  const double side = std::max(wide, high);
  const double shares = ratio / (pictureWidth / pictureHeight);
  double width = shares >= 1 ? side : shares * side;
  double height = shares >= 1 ? side / shares : side;
  if (width > 1) {
    width = 1;
    height = 1 / shares;
  }
  if (height > 1) {
    height = 1;
    width = shares;
  }
  const double halfWidth = width / 2;
  const double halfHeight = height / 2;
  const double x = Inside((edges.left + edges.right) * 0.5, halfWidth);
  const double y = Inside((edges.bottom + edges.top) * 0.5, halfHeight);
  edges = {x - halfWidth, x + halfWidth, y - halfHeight, y + halfHeight};
}

void LockRatio(int ratio, int pictureWidth, int pictureHeight, CropEdges10000& edges) {
  if (ratio <= 0) return;
  CropEdges shares = {edges.left / 10000.0, edges.right / 10000.0, edges.bottom / 10000.0,
                      edges.top / 10000.0};
  LockRatio(ratio / 10000.0, pictureWidth, pictureHeight, shares);
  const auto rounded = [](double share) { return base::TruncateToInt32(share * 10000 + 0.5); };
  edges = {rounded(shares.left), rounded(shares.right), rounded(shares.bottom),
           rounded(shares.top)};
}

}  // namespace editing
