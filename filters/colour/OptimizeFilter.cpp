#include "filters/colour/OptimizeFilter.h"

#include "filters/tools/HlsKernels.h"
#include "filters/tools/LuminanceKernels.h"
#include "filters/tools/ToneCurves.h"

std::span<const ParameterRow<OptimizeParameters>> OptimizeParameters::Rows() {
  using P = OptimizeParameters;
  static constexpr ParameterRow<P> kRows[] = {
      {"Slider1", "Slider1=%.3d", &P::gamma, {.least = -100, .gloss = "darker or brighter"}},
      {"Slider2",
       ", Slider2=%.3d",
       &P::lights,
       {.least = -100, .gloss = "brighter or darker lights"}},
      {"Slider3",
       ", Slider3=%.3d",
       &P::shadows,
       {.least = -100, .gloss = "darker or brighter shadows"}},
      {"Slider4",
       ", Slider4=%.3d",
       &P::saturation,
       {.least = -100, .gloss = "less or more saturation"}}};
  return kRows;
}

void COptimizeFilter::Commit() {
  ParameterFilter::Commit();
  table = kernels::BuildOptimizeTable(active.gamma, active.lights, active.shadows);
}

void COptimizeFilter::ChangeRow(BYTE* colour, BYTE*, int width) {
  kernels::ActiveLuminanceKernels().replaceLuminance(colour, width, table);
  if (active.saturation == 0) return;
  kernels::ActiveHlsKernels().saturate(colour, width,
                                       kernels::SaturationFactor(active.saturation * 0.8));
}
