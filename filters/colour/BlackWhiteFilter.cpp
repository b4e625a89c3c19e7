#include "filters/colour/BlackWhiteFilter.h"

#include "base/Guid.h"
#include "filters/pixels/PointKernelTable.h"

const FilterClass kBlackWhiteClass = {
    .sortKey = 34,
    .className = "CBlackWhiteFilter",
    .progId = "ZNFilter.BlackWhiteness.1",
    .classId = base::Guid("{9332F88D-3CA7-44A8-A08E-0519506B144E}"),
    .order = 5000,
    .iconName = "icons4_blackwhite",
    .nameKey = "IDS_BLACKWHITE_NAME",
    .helpKey = "HLP_BLACKWHITE",
    .defaultText = "BlackWhiteNess=100",
    .gloss = "Black and white",
    .make = MakeFilter<CBlackWhiteFilter>,
    .describe = CBlackWhiteFilter::Describe};

std::span<const ParameterRow<BlackWhiteParameters>> BlackWhiteParameters::Rows() {
  static constexpr ParameterRow<BlackWhiteParameters> kRows[] = {
      {"BlackWhiteNess",
       "BlackWhiteNess=%.3d",
       &BlackWhiteParameters::amount,
       {.gloss = "share of the grey picture"}}};
  return kRows;
}

void CBlackWhiteFilter::ChangeRow(BYTE* colour, BYTE*, int width) {
  kernels::Choose<kernels::PointKernelTable>().blackWhite(colour, width, active.amount);
}
