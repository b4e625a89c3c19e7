#include "filters/colour/HsbFilter.h"

#include "base/Guid.h"

namespace {

constexpr ParameterDescription Turn(const char* gloss) {
  return {.least = -180, .greatest = 180, .gloss = gloss};
}

constexpr ParameterDescription Percent(const char* gloss) {
  return {.least = -100, .greatest = 100, .gloss = gloss};
}

}  // namespace

const FilterClass kHsbClass = {
    .sortKey = 15,
    .className = "CHsbFilter",
    .progId = "ZNFilter.HSB.1",
    .classId = base::Guid("{3DA0FB0A-DE04-4D5E-9481-238D9204C31F}"),
    .order = 5000,
    .iconName = "icons4_hsb",
    .nameKey = "IDS_HSB_NAME",
    .helpKey = "HLP_HSB",
    .defaultText =
        "Hue=0,Sat=0,Bright=0,HueR=0,SatR=0,BrightR=0,HueY=0,SatY=0,BrightY=0,HueG=0,SatG=0,"
        "BrightG=0,HueC=0,SatC=0,BrightC=0,HueB=0,SatB=0,BrightB=0,HueM=0,SatM=0,BrightM=0",
    .gloss = "Hue, saturation, brightness",
    .make = MakeFilter<CHsbFilter>,
    .describe = CHsbFilter::Describe};

std::span<const ParameterRow<HsbParameters>> HsbParameters::Rows() {
  using P = HsbParameters;
  // A key is found at its first place in the text: the general keys have to stand ahead of those
  // that begin with them.
  static constexpr ParameterRow<P> kRows[] = {
      {"Hue", "Hue=%.3d", &P::hue, Turn("turn of all hues")},
      {"Sat", ", Sat=%.3d", &P::sat, Percent("more or less saturation of all colours")},
      {"Bright", ", Bright=%.3d", &P::bright, Percent("more or less brightness of all colours")},
      {"HueR", ",HueR=%.3d", &P::hueR, Turn("turn of the reds")},
      {"SatR", ", SatR=%.3d", &P::satR, Percent("saturation of the reds")},
      {"BrightR", ", BrightR=%.3d", &P::brightR, Percent("brightness of the reds")},
      {"HueY", ",HueY=%.3d", &P::hueY, Turn("turn of the yellows")},
      {"SatY", ", SatY=%.3d", &P::satY, Percent("saturation of the yellows")},
      {"BrightY", ", BrightY=%.3d", &P::brightY, Percent("brightness of the yellows")},
      {"HueG", ",HueG=%.3d", &P::hueG, Turn("turn of the greens")},
      {"SatG", ", SatG=%.3d", &P::satG, Percent("saturation of the greens")},
      {"BrightG", ", BrightG=%.3d", &P::brightG, Percent("brightness of the greens")},
      {"HueC", ",HueC=%.3d", &P::hueC, Turn("turn of the cyans")},
      {"SatC", ", SatC=%.3d", &P::satC, Percent("saturation of the cyans")},
      {"BrightC", ", BrightC=%.3d", &P::brightC, Percent("brightness of the cyans")},
      {"HueB", ",HueB=%.3d", &P::hueB, Turn("turn of the blues")},
      {"SatB", ", SatB=%.3d", &P::satB, Percent("saturation of the blues")},
      {"BrightB", ", BrightB=%.3d", &P::brightB, Percent("brightness of the blues")},
      {"HueM", ",HueM=%.3d", &P::hueM, Turn("turn of the magentas")},
      {"SatM", ", SatM=%.3d", &P::satM, Percent("saturation of the magentas")},
      {"BrightM", ", BrightM=%.3d", &P::brightM, Percent("brightness of the magentas")}};
  return kRows;
}

HsbParameters HsbParameters::ActiveStart() {
  HsbParameters start;
  start.hue = start.sat = start.bright = -1;
  return start;
}

void CHsbFilter::Commit() {
  ParameterFilter::Commit();
  const HsbParameters& a = active;
  kernels::BuildHueChanges({a.hue,
                            a.sat,
                            a.bright,
                            {a.hueR, a.hueY, a.hueG, a.hueC, a.hueB, a.hueM},
                            {a.satR, a.satY, a.satG, a.satC, a.satB, a.satM},
                            {a.brightR, a.brightY, a.brightG, a.brightC, a.brightB, a.brightM}},
                           changes);
}

void CHsbFilter::ChangeRow(BYTE* colour, BYTE*, int width) {
  kernels::Choose<kernels::HlsKernelTable>().changeByHue(colour, width, changes);
}
