#include "filters/frames/EdgeFade.h"

#include <algorithm>
#include <cstddef>

#include "filters/frames/EdgeFadeKernels.h"
#include "filters/pixels/ByteTableKernels.h"

namespace kernels {
namespace {

constexpr double kLeastReach = 0.5;

// Of a run whose pixels all keep the same share.
ByteTable TableOfRun(double across) {
  ByteTable table;
  for (std::size_t m = 0; m < table.size(); ++m) table[m] = static_cast<std::uint8_t>(m);
  const double noWay = 0;
  for (std::uint8_t& mask : table) FadeByWays(&mask, &noWay, across, 1);
  return table;
}

}  // namespace

EdgeFade::EdgeFade(int width, int height, double reach, const FadedEdges& edges, bool roundCorners)
    : width_(std::max(width, 0)),
      height_(height),
      reach_(reach),
      edges_(edges),
      isRound_(roundCorners),
      rightStart_(width_) {
  if (reach_ < kLeastReach) return;
  for (int x = 0; x < width_; ++x) ways_.push_back(WayOut(x, width_, edges_.left, edges_.right));
  while (leftEnd_ < width_ && ways_[static_cast<std::size_t>(leftEnd_)] > 0) ++leftEnd_;
  while (rightStart_ > leftEnd_ && ways_[static_cast<std::size_t>(rightStart_ - 1)] > 0) {
    --rightStart_;
  }
  for (const double way : ways_) {
    const double depth = 1 - way;
    shares_.push_back(depth * depth * (3 - 2 * depth));
  }
}

double EdgeFade::WayOut(int at, int size, bool lowFades, bool highFades) const {
  const double fromLow = lowFades ? at + 0.5 : reach_;
  const double fromHigh = highFades ? size - at - 0.5 : reach_;
  return 1 - std::min(std::min(fromLow, fromHigh) / reach_, 1.0);
}

void EdgeFade::FadeRow(std::uint8_t* mask, int x, int y, int count) const {
  if (reach_ < kLeastReach) return;
  const double across = WayOut(y, height_, edges_.bottom, edges_.top);
  const int end = x + count;
  const int middle = std::clamp(leftEnd_, x, end);
  const int right = std::clamp(rightStart_, middle, end);
  FadeSide(mask, x, middle, across);
  if (across > 0) FadeMiddle(mask + (middle - x), right - middle, across);
  FadeSide(mask + (right - x), right, end, across);
}

void EdgeFade::FadeSide(std::uint8_t* mask, int first, int end, double across) const {
  if (first >= end) return;
  const EdgeFadeKernels& kernels = Choose<EdgeFadeKernels>();
  if (across == 0) return kernels.byShares(mask, shares_.data() + first, end - first);
  (isRound_ ? kernels.byDistance : kernels.byWays)(mask, ways_.data() + first, across, end - first);
}

void EdgeFade::FadeMiddle(std::uint8_t* mask, int count, double across) const {
  if (count < 1) return;
  Choose<ByteTableKernels>().mapBytes(mask, mask, static_cast<std::size_t>(count),
                                      TableOfRun(across));
}

}  // namespace kernels
