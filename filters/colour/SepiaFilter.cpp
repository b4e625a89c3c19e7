#include "filters/colour/SepiaFilter.h"

#include "filters/colour/KeptShare.h"
#include "filters/tools/PointKernelTable.h"

std::span<const ParameterRow<SepiaParameters>> SepiaParameters::Rows() {
  static constexpr ParameterRow<SepiaParameters> kRows[] = {
      {"Sepia", "Sepia=%.3d", &SepiaParameters::keep, KeptShare("strength of the brown tone")}};
  return kRows;
}

void CSepiaFilter::ChangeRow(BYTE* colour, BYTE*, int width) {
  kernels::ActivePointKernels().sepia(colour, width, active.keep);
}
