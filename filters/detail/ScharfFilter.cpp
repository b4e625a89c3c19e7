#include "filters/detail/ScharfFilter.h"

std::span<const ParameterRow<ScharfParameters>> ScharfParameters::Rows() {
  static constexpr ParameterRow<ScharfParameters> kRows[] = {
      {"Sharpness",
       "Sharpness=%.3d,ExtraParam=|SHARP|",
       &ScharfParameters::strength,
       {.gloss = "strength; with Version=2 it shrinks with the zoom",
        .absent = AbsentKey::CountsAsZero}}};
  return kRows;
}
