#include "filters/colour/tone/HundKFilter.h"

#include "base/Guid.h"
#include "filters/colour/tone/ToneCurves.h"
#include "filters/pixels/HlsKernels.h"

const FilterClass kHundKClass = {.sortKey = 12,
                                 .className = "CHundKFilter",
                                 .progId = "ZNFilter.BrightnessContrast.1",
                                 .classId = base::Guid("{02027032-7091-40D9-9E91-6596CA1AF458}"),
                                 .order = 5000,
                                 .iconName = "icons4_hkuk",
                                 .nameKey = "IDS_HUNDK_NAME",
                                 .helpKey = "HLP_IMAGE_ENHANCEMENT",
                                 .defaultText = "Brightness=000,Contrast=000,Saturation=000",
                                 .gloss = "Brightness, contrast, saturation",
                                 .make = MakeFilter<CHundKFilter>,
                                 .describe = CHundKFilter::Describe};

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
  kernels::Choose<kernels::ByteTableKernels>().mapBytes(colour, colour, base::ColourBytes(width),
                                                        table);
  if (active.saturation == 0) return;
  kernels::Choose<kernels::HlsKernelTable>().saturate(colour, width,
                                                      kernels::SaturationFactor(active.saturation));
}
