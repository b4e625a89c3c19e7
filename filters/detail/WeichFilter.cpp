#include "filters/detail/WeichFilter.h"

#include "base/Guid.h"

const FilterClass kWeichClass = {.sortKey = 25,
                                 .className = "CWeichFilter",
                                 .progId = "ZNFilter.Blur.1",
                                 .classId = base::Guid("{B60C3E69-2546-4B64-B598-D4F8E41DEB51}"),
                                 .order = 5000,
                                 .iconName = "icons4_weichz",
                                 .nameKey = "IDS_WEICH_NAME",
                                 .helpKey = "HLP_WEICH",
                                 .defaultText = "Blurness=000",
                                 .gloss = "Soften",
                                 .make = MakeFilter<CWeichFilter>,
                                 .describe = CWeichFilter::Describe};

std::span<const ParameterRow<WeichParameters>> WeichParameters::Rows() {
  static constexpr ParameterRow<WeichParameters> kRows[] = {
      {"Blurness",
       "Blurness=%.3d",
       &WeichParameters::strength,
       {.gloss = "strength; with Version=2 it shrinks with the zoom",
        .absent = AbsentKey::CountsAsZero}}};
  return kRows;
}
