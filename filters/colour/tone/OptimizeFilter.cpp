#include "filters/colour/tone/OptimizeFilter.h"

#include "base/Guid.h"
#include "filters/colour/tone/ToneCurves.h"
#include "filters/pixels/HlsKernels.h"
#include "filters/pixels/LuminanceKernels.h"

const FilterClass kOptimizeClass = {
    .sortKey = 13,
    .className = "COptimizeFilter",
    .progId = "ZNFilter.Optimize.1",
    .classId = base::Guid("{D2D04434-66E5-4985-9F63-DF72AA0890FD}"),
    .order = 5000,
    .iconName = "icons4_exposure",
    .nameKey = "IDS_OPT_NAME",
    .helpKey = "HLP_OPT",
    .defaultText = "Slider1=000,Slider2=000,Slider3=000,Slider4=000",
    .gloss = "Optimise light and colour",
    .make = MakeFilter<COptimizeFilter>,
    .describe = COptimizeFilter::Describe};

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
  kernels::Choose<kernels::LuminanceKernelTable>().replaceLuminance(colour, width, table);
  if (active.saturation == 0) return;
  kernels::Choose<kernels::HlsKernelTable>().saturate(
      colour, width, kernels::SaturationFactor(active.saturation * 0.8));
}
