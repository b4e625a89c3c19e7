#include "filters/colour/tone/Exposure2Filter.h"

#include "base/Guid.h"
#include "filters/colour/tone/ToneCurves.h"

const FilterClass kExposure2Class = {
    .sortKey = 45,
    .className = "CExposure2Filter",
    .progId = "ZNFilter.Exposure2.1",
    .classId = base::Guid("{1F62A67C-EED3-4D97-9256-6CEF6DD7E210}"),
    .order = 5000,
    .iconName = "icons_filter1",
    .nameKey = "IDS_EXPOSURE2_NAME",
    .helpKey = "HLP_EXPOSURE2",
    .defaultText = "Red=000,Green=000,Blue=000",
    .gloss = "Exposure by channel",
    .make = MakeFilter<CExposure2Filter>,
    .describe = CExposure2Filter::Describe};

std::span<const ParameterRow<Exposure2Parameters>> Exposure2Parameters::Rows() {
  using P = Exposure2Parameters;
  static constexpr ParameterRow<P> kRows[] = {
      {"Red", "Red=%.3d", &P::red, {.least = -100, .gloss = "darker or brighter red"}},
      {"Green", ", Green=%.3d", &P::green, {.least = -100, .gloss = "darker or brighter green"}},
      {"Blue", ", Blue=%.3d", &P::blue, {.least = -100, .gloss = "darker or brighter blue"}}};
  return kRows;
}

void CExposure2Filter::Commit() {
  ParameterFilter::Commit();
  const auto move = [](int control) {
    return kernels::BuildGreyMove(kernels::GammaExponent(control, kernels::kExposureGamma));
  };
  moves = {move(active.blue), move(active.green), move(active.red)};
}

void CExposure2Filter::ChangeRow(BYTE* colour, BYTE*, int width) {
  kernels::Choose<kernels::LuminanceKernelTable>().moveFromGrey(colour, width, moves);
}
