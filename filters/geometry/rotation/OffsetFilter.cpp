#include "filters/geometry/rotation/OffsetFilter.h"

#include "base/Arithmetic.h"
#include "base/Guid.h"

const FilterClass kOffsetClass = {.sortKey = 41,
                                  .className = "COffsetFilter",
                                  .progId = "ZNFilter.Offset.1",
                                  .classId = base::Guid("{0943494A-2096-448F-B6A6-C471DF51BC16}"),
                                  .order = 5000,
                                  .iconName = "icons4_shift",
                                  .nameKey = "IDS_OFFSET_NAME",
                                  .helpKey = "HLP_OFFSET",
                                  .defaultText = "OffsetX=000,OffsetY=000",
                                  .gloss = "Move the picture",
                                  .make = MakeFilter<COffsetFilter>,
                                  .describe = COffsetFilter::Describe};

std::span<const ParameterRow<OffsetParameters>> OffsetParameters::Rows() {
  using P = OffsetParameters;
  static constexpr ParameterRow<P> kRows[] = {
      {"OffsetX",
       "OffsetX=%.3d",
       &P::offsetX,
       {.least = -1000, .greatest = 1000, .gloss = "pixels to the left"}},
      {"OffsetY",
       ", OffsetY=%.3d",
       &P::offsetY,
       {.least = -1000, .greatest = 1000, .gloss = "pixels downwards"}}};
  return kRows;
}

void COffsetFilter::Commit() {
  const auto held = HoldState();
  ParameterFilter::Commit();
  output.offsetX = base::WrapToInt32(std::int64_t{output.offsetX} - active.offsetX);
  output.offsetY = base::WrapToInt32(std::int64_t{output.offsetY} - active.offsetY);
}
