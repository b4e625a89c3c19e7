#include "filters/colour/tone/ExposureFilter.h"

#include "base/Guid.h"
#include "filters/colour/tone/ToneCurves.h"
#include "filters/pixels/HlsKernels.h"

const FilterClass kExposureClass = {.sortKey = 19,
                                    .className = "CExposureFilter",
                                    .progId = "ZNFilter.Exposure.1",
                                    .classId = base::Guid("{FCE043D5-90A3-4619-9B54-6A6AE99B1E25}"),
                                    .order = 5000,
                                    .iconName = "icons_exposure",
                                    .nameKey = "IDS_EXPOSURE_NAME",
                                    .helpKey = "HLP_EXPOSURECORRECTION",
                                    .defaultText = "Red=000,Green=000,Blue=000",
                                    .gloss = "Exposure",
                                    .make = MakeFilter<CExposureFilter>,
                                    .describe = CExposureFilter::Describe};

std::span<const ParameterRow<ExposureParameters>> ExposureParameters::Rows() {
  using P = ExposureParameters;
  static constexpr ParameterRow<P> kRows[] = {
      {"Red", "Red=%.3d", &P::before, {.least = -100, .gloss = "darker or brighter"}},
      {"Green",
       ", Green=%.3d",
       &P::saturation,
       {.least = -100, .gloss = "less or more saturation"}},
      {"Blue",
       ", Blue=%.3d",
       &P::after,
       {.least = -100, .gloss = "darker or brighter, behind the saturation"}}};
  return kRows;
}

void CExposureFilter::Commit() {
  using namespace kernels;
  ParameterFilter::Commit();
  before = BuildGammaTable(GammaExponent(active.before, kExposureGamma));
  after = BuildGammaTable(GammaExponent(active.after, kExposureGamma));
  both = Compose(before, after);
  saturation = static_cast<double>(std::int64_t{active.saturation} * 80 / 100);
}

void CExposureFilter::ChangeRow(BYTE* colour, BYTE*, int width) {
  const auto map = kernels::Choose<kernels::ByteTableKernels>().mapBytes;
  const std::size_t bytes = base::ColourBytes(width);
  if (saturation == 0) return map(colour, colour, bytes, both);
  map(colour, colour, bytes, before);
  kernels::Choose<kernels::HlsKernelTable>().saturate(colour, width,
                                                      kernels::SaturationFactor(saturation));
  map(colour, colour, bytes, after);
}
