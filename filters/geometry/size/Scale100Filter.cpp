#include "filters/geometry/size/Scale100Filter.h"

#include <algorithm>
#include <limits>

#include "base/Arithmetic.h"
#include "base/Guid.h"

namespace {

// The length whose percentage is `length`.
int WholeOf(int length, std::int32_t percent) {
  constexpr std::int64_t kLargest = std::numeric_limits<int>::max();
  if (percent == 0) return static_cast<int>(kLargest);
  return static_cast<int>(
      std::clamp<std::int64_t>(std::int64_t{length} * 100 / percent, 1, kLargest));
}

}  // namespace

const FilterClass kScale100Class = {
    .sortKey = 7,
    .className = "CScale100Filter",
    .progId = "ZNFilter.Scale100.1",
    .classId = base::Guid("{CCB64654-0C51-480B-918B-039417391CD2}"),
    .order = 700,
    .iconName = "icons4_percentscale",
    .nameKey = "IDS_SCALE100_NAME",
    .helpKey = "HLP_SCALE100",
    .defaultText = "HorizontalProz=100,VerticalProz=100,KeepProportions=1,AllowEnlarge=1",
    .gloss = "Scale by percent",
    .example = "HorizontalProz=50,VerticalProz=50",
    .make = MakeFilter<CScale100Filter>,
    .describe = CScale100Filter::Describe};

Scale100Parameters Scale100Parameters::ActiveStart() {
  Scale100Parameters start;
  start.horizontalProz = start.verticalProz = -1;
  return start;
}

void CScale100Filter::Commit() {
  const auto held = HoldState();
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
  const Scale100Parameters now = Active();
  return PassTargetSize(width, height, base::TruncateToInt32(width * (now.horizontalProz / 100.0)),
                        base::TruncateToInt32(height * (now.verticalProz / 100.0)));
}

HRESULT CScale100Filter::QuerySize(int* width, int* height, double aspect) {
  const HRESULT status = ParameterFilter::QuerySize(width, height, aspect);
  if (FAILED(status) || *width <= 0 || *height <= 0) return status;
  const Scale100Parameters now = Active();
  *width = WholeOf(*width, now.horizontalProz);
  *height = WholeOf(*height, now.verticalProz);
  return status;
}
