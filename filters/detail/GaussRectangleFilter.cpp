#include "filters/detail/GaussRectangleFilter.h"

#include <algorithm>

namespace {

// A destination ahead of the first row or column is all the caller's, but that many fewer lie
// behind.
int Given(int length, int dest) {
  return static_cast<int>(std::max<std::int64_t>(0, std::int64_t{length} + std::min(dest, 0)));
}

}  // namespace

bool ChangeRectangleByGauss(const PullRectangle& rectangle, const kernels::GaussChange& change,
                            const std::atomic<bool>& abort) {
  if (!rectangle.colourRows) return true;
  return kernels::ChangeByGauss(rectangle.colourRows, Given(rectangle.width, rectangle.destX),
                                Given(rectangle.height, rectangle.destY), change,
                                kernels::ActiveSimdLevel(), abort);
}
