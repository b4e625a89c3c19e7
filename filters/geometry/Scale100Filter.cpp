#include "filters/geometry/Scale100Filter.h"

#include <algorithm>
#include <limits>

#include "base/Arithmetic.h"

namespace {

// The length whose percentage is `length`.
int WholeOf(int length, std::int32_t percent) {
  constexpr std::int64_t kLargest = std::numeric_limits<int>::max();
  if (percent == 0) return static_cast<int>(kLargest);
  return static_cast<int>(
      std::clamp<std::int64_t>(std::int64_t{length} * 100 / percent, 1, kLargest));
}

}  // namespace

Scale100Parameters Scale100Parameters::ActiveStart() {
  Scale100Parameters start;
  start.horizontalProz = start.verticalProz = -1;
  return start;
}

void CScale100Filter::Commit() {
  ParameterFilter::Commit();
  Ratios ratios = {active.horizontalProz / 100.0, active.verticalProz / 100.0};
  if (!active.allowEnlarge) {
    ratios.x = std::min(ratios.x, 1.0);
    ratios.y = std::min(ratios.y, 1.0);
  }
  if (active.keepProportions) ratios.x = ratios.y = std::min(ratios.x, ratios.y);
  SetOutput(ratios, input.width * ratios.x, input.height * ratios.y);
}

// By the percentages as they are: what Commit limits is not limited here.
HRESULT CScale100Filter::SetTargetSize(int width, int height) {
  return PassTargetSize(width, height,
                        base::TruncateToInt32(width * (active.horizontalProz / 100.0)),
                        base::TruncateToInt32(height * (active.verticalProz / 100.0)));
}

HRESULT CScale100Filter::QuerySize(int* width, int* height, double aspect) {
  const HRESULT status = ParameterFilter::QuerySize(width, height, aspect);
  if (FAILED(status) || *width <= 0 || *height <= 0) return status;
  *width = WholeOf(*width, active.horizontalProz);
  *height = WholeOf(*height, active.verticalProz);
  return status;
}
