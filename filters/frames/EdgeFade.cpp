#include "filters/frames/EdgeFade.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

#include "filters/pixels/ByteTableKernels.h"

namespace kernels {
namespace {

constexpr double kLeastReach = 0.5;

}  // namespace

EdgeFade::EdgeFade(int width, int height, double reach, const FadedEdges& edges, bool roundCorners)
    : width_(std::max(width, 0)),
      height_(height),
      reach_(reach),
      edges_(edges),
      isRound_(roundCorners),
      rightStart_(width_) {
  if (reach_ < kLeastReach) return;
  for (int x = 0; x < width_; ++x) {
    const double way = WayOut(x, width_, edges_.left, edges_.right);
    const double depth = 1 - way;
    ways_.Add(way);
    shares_.Add(depth * depth * (3 - 2 * depth));
  }
  while (leftEnd_ < width_ && ways_[leftEnd_] > 0) ++leftEnd_;
  while (rightStart_ > leftEnd_ && ways_[rightStart_ - 1] > 0) --rightStart_;
}

double EdgeFade::WayOut(int at, int size, bool lowFades, bool highFades) const {
  const double fromLow = lowFades ? at + 0.5 : reach_;
  const double fromHigh = highFades ? size - at - 0.5 : reach_;
  return 1 - std::min(std::min(fromLow, fromHigh) / reach_, 1.0);
}

void EdgeFade::FadeRow(std::uint8_t* mask, int x, int y, int count) const {
  if (reach_ < kLeastReach) return;
  const double across = WayOut(y, height_, edges_.bottom, edges_.top);
  const int mirrored = across > 0 && count == width_ ? MirroredColumns() : 0;
  FadeBothSides(mask, mirrored, across);
  mask += mirrored;
  x += mirrored;
  const int end = x + count - 2 * mirrored;
  const int middle = std::clamp(leftEnd_, x, end);
  const int right = std::clamp(rightStart_, middle, end);
  FadeSide(mask, x, middle, across);
  if (across > 0) FadeMiddle(mask + (middle - x), middle, right, across);
  FadeSide(mask + (right - x), right, end, across);
}

void EdgeFade::FadeSide(std::uint8_t* mask, int first, int end, double across) const {
  const EdgeFadeKernels& kernels = Choose<EdgeFadeKernels>();
  if (across == 0) return kernels.byShares(mask, shares_.From(first), end - first);
  (isRound_ ? kernels.byDistance : kernels.byWays)(mask, ways_.From(first), across, end - first);
}

// Only where both sides fade do they fade alike.
int EdgeFade::MirroredColumns() const {
  return edges_.left && edges_.right ? std::min(leftEnd_, width_ / 2) : 0;
}

void EdgeFade::FadeBothSides(std::uint8_t* mask, int count, double across) const {
  const EdgeFadeKernels& kernels = Choose<EdgeFadeKernels>();
  (isRound_ ? kernels.mirroredByDistance : kernels.mirroredByWays)({mask, mask + width_},
                                                                   ways_.From(0), across, count);
}

// All keep the same share, so that a table of all masks serves many of them.
void EdgeFade::FadeMiddle(std::uint8_t* mask, int first, int end, double across) const {
  ByteTable table;
  const int masks = static_cast<int>(table.size());
  if (end - first < masks) return FadeSide(mask, first, end, across);
  std::iota(table.begin(), table.end(), std::uint8_t{0});
  FadeSide(table.data(), first, first + masks, across);
  Choose<ByteTableKernels>().mapBytes(mask, mask, static_cast<std::size_t>(end - first), table);
}

}  // namespace kernels
