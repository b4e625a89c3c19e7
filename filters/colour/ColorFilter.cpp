#include "filters/colour/ColorFilter.h"

#include "filters/tools/PointKernelTable.h"

std::span<const ParameterRow<ColorParameters>> ColorParameters::Rows() {
  static constexpr ParameterRow<ColorParameters> kRows[] = {
      {"Red", "Red=%.3d", &ColorParameters::red, {.least = -100, .gloss = "more or less red"}},
      {"Green",
       ", Green=%.3d",
       &ColorParameters::green,
       {.least = -100, .gloss = "more or less green"}},
      {"Blue",
       ", Blue=%.3d",
       &ColorParameters::blue,
       {.least = -100, .gloss = "more or less blue"}}};
  return kRows;
}

void CColorFilter::ChangeRow(BYTE* colour, BYTE*, int width) {
  kernels::ActivePointKernels().shiftColours(
      colour, width,
      {kernels::ColourOffset(active.blue), kernels::ColourOffset(active.green),
       kernels::ColourOffset(active.red)});
}
