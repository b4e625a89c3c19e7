#include "filters/colour/HundKFilter.h"

#include "filters/tools/HlsKernels.h"
#include "filters/tools/ToneCurves.h"

std::span<const ParameterRow<HundKParameters>> HundKParameters::Rows() {
  using P = HundKParameters;
  static constexpr ParameterRow<P> kRows[] = {
      {"Brightness",
       "Brightness=%.3d",
       &P::brightness,
       {.least = -100, .gloss = "darker or brighter"}},
      {"Contrast",
       ", Contrast=%.3d",
       &P::contrast,
       {.least = -100, .gloss = "less or more contrast"}},
      {"Saturation",
       ", Saturation=%.3d",
       &P::saturation,
       {.least = -100, .gloss = "less or more saturation"}}};
  return kRows;
}

void CHundKFilter::Commit() {
  ParameterFilter::Commit();
  table = kernels::BuildContrastTable(active.brightness, active.contrast);
}

void CHundKFilter::ChangeRow(BYTE* colour, BYTE*, int width) {
  kernels::ActiveByteTableKernels().mapBytes(colour, colour, base::ColourBytes(width), table);
  if (active.saturation == 0) return;
  kernels::ActiveHlsKernels().saturate(colour, width, kernels::SaturationFactor(active.saturation));
}
