#include "filters/detail/WeichFilter.h"

std::span<const ParameterRow<WeichParameters>> WeichParameters::Rows() {
  static constexpr ParameterRow<WeichParameters> kRows[] = {
      {"Blurness",
       "Blurness=%.3d",
       &WeichParameters::strength,
       {.gloss = "strength; with Version=2 it shrinks with the zoom",
        .absent = AbsentKey::CountsAsZero}}};
  return kRows;
}
