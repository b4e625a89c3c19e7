#include "filters/colour/FarbEqualizerFilter.h"

#include "base/Guid.h"

const FilterClass kFarbEqualizerClass = {
    .sortKey = 16,
    .className = "CFarbEqualizerFilter",
    .progId = "ZNFilter.ColorTuning.1",
    .classId = base::Guid("{BB74284D-315E-41D8-9876-315240B8F996}"),
    .order = 5000,
    .iconName = "icons4_colorequalizer",
    .nameKey = "IDS_FARBEQUALIZER_NAME",
    .helpKey = "HLP_FARBEQUALIZER",
    .defaultText = "SatR=000,SatY=000,SatG=000,SatC=000,SatB=000,SatM=000",
    .gloss = "Colour equaliser by hue",
    .example = "SatB=-90",
    .make = MakeFilter<CFarbEqualizerFilter>,
    .describe = CFarbEqualizerFilter::Describe};

std::span<const ParameterRow<FarbEqualizerParameters>> FarbEqualizerParameters::Rows() {
  using P = FarbEqualizerParameters;
  constexpr auto Percent = [](const char* gloss) {
    return ParameterDescription{.least = -100, .greatest = 100, .gloss = gloss};
  };
  static constexpr ParameterRow<P> kRows[] = {
      {"SatR", "SatR=%.3d", &P::satR, Percent("saturation of the reds")},
      {"SatY", ",SatY=%.3d", &P::satY, Percent("saturation of the yellows")},
      {"SatG", ",SatG=%.3d", &P::satG, Percent("saturation of the greens")},
      {"SatC", ",SatC=%.3d", &P::satC, Percent("saturation of the cyans")},
      {"SatB", ",SatB=%.3d", &P::satB, Percent("saturation of the blues")},
      {"SatM", ",SatM=%.3d", &P::satM, Percent("saturation of the magentas")}};
  return kRows;
}

void CFarbEqualizerFilter::Commit() {
  ParameterFilter::Commit();
  const FarbEqualizerParameters& a = active;
  kernels::BuildSaturationFactors({a.satR, a.satY, a.satG, a.satC, a.satB, a.satM}, factors);
}

void CFarbEqualizerFilter::ChangeRow(BYTE* colour, BYTE*, int width) {
  kernels::Choose<kernels::HlsKernelTable>().saturateByHue(colour, width, factors);
}
