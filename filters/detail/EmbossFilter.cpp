#include "filters/detail/EmbossFilter.h"

std::span<const ParameterRow<EmbossParameters>> EmbossParameters::Rows() {
  static constexpr ParameterRow<EmbossParameters> kRows[] = {
      {"EmbossStrength",
       "EmbossStrength=%.3d",
       &EmbossParameters::strength,
       {.gloss = "share of the relief in the result", .absent = AbsentKey::CountsAsZero}}};
  return kRows;
}
