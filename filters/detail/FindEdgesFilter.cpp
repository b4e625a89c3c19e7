#include "filters/detail/FindEdgesFilter.h"

std::span<const ParameterRow<FindEdgesParameters>> FindEdgesParameters::Rows() {
  static constexpr ParameterRow<FindEdgesParameters> kRows[] = {
      {"EdgeEnhance",
       "EdgeEnhance=%.3d",
       &FindEdgesParameters::strength,
       {.gloss = "share of the edges in the result", .absent = AbsentKey::CountsAsZero}}};
  return kRows;
}
