#include "filters/colour/ColorFilter.h"

#include "base/Guid.h"
#include "filters/pixels/PointKernelTable.h"

const FilterClass kColorClass = {.sortKey = 21,
                                 .className = "CColorFilter",
                                 .progId = "ZNFilter.RGBColor.1",
                                 .classId = base::Guid("{BF89F2E9-4021-4D80-ADED-8B6828BE4EDD}"),
                                 .order = 5000,
                                 .iconName = "icons4_color",
                                 .nameKey = "IDS_COLOR_NAME",
                                 .helpKey = "HLP_COLOR",
                                 .defaultText = "Red=000,Green=000,Blue=000",
                                 .gloss = "More or less red, green, blue",
                                 .make = MakeFilter<CColorFilter>,
                                 .describe = CColorFilter::Describe};

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
  kernels::Choose<kernels::PointKernelTable>().shiftColours(
      colour, width,
      {kernels::ColourOffset(active.blue), kernels::ColourOffset(active.green),
       kernels::ColourOffset(active.red)});
}
