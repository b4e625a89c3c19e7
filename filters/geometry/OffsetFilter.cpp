#include "filters/geometry/OffsetFilter.h"

#include "base/Arithmetic.h"

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
  ParameterFilter::Commit();
  output.offsetX = base::WrapToInt32(std::int64_t{output.offsetX} - active.offsetX);
  output.offsetY = base::WrapToInt32(std::int64_t{output.offsetY} - active.offsetY);
}
