#include "filters/colour/BlackWhiteFilter.h"

#include "filters/tools/PointKernelTable.h"

std::span<const ParameterRow<BlackWhiteParameters>> BlackWhiteParameters::Rows() {
  static constexpr ParameterRow<BlackWhiteParameters> kRows[] = {
      {"BlackWhiteNess",
       "BlackWhiteNess=%.3d",
       &BlackWhiteParameters::amount,
       {.gloss = "share of the grey picture"}}};
  return kRows;
}

void CBlackWhiteFilter::ChangeRow(BYTE* colour, BYTE*, int width) {
  kernels::ActivePointKernels().blackWhite(colour, width, active.amount);
}
