#include "filters/detail/FindEdgesFilter.h"

#include "base/Guid.h"

const FilterClass kFindEdgesClass = {
    .sortKey = 46,
    .className = "CFindEdgesFilter",
    .progId = "ZNFilter.FindEdges.1",
    .classId = base::Guid("{37D87393-3865-4937-977E-A54124B169B0}"),
    .order = 5000,
    .iconName = "icons4_konturenfinden",
    .nameKey = "IDS_FINDEDGES_NAME",
    .helpKey = "HLP_FINDEDGES",
    .defaultText = "EdgeEnhance=000",
    .gloss = "Find edges",
    .make = MakeFilter<CFindEdgesFilter>,
    .describe = CFindEdgesFilter::Describe};

std::span<const ParameterRow<FindEdgesParameters>> FindEdgesParameters::Rows() {
  static constexpr ParameterRow<FindEdgesParameters> kRows[] = {
      {"EdgeEnhance",
       "EdgeEnhance=%.3d",
       &FindEdgesParameters::strength,
       {.gloss = "share of the edges in the result", .absent = AbsentKey::CountsAsZero}}};
  return kRows;
}
