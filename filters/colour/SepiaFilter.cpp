#include "filters/colour/SepiaFilter.h"

#include "base/Guid.h"
#include "filters/colour/KeptShareParameters.h"
#include "filters/pixels/PointKernelTable.h"

const FilterClass kSepiaClass = {.sortKey = 35,
                                 .className = "CSepiaFilter",
                                 .progId = "ZNFilter.Sepia.1",
                                 .classId = base::Guid("{0FE71124-90E5-4CE7-BFD0-857F0E22ABC8}"),
                                 .order = 5000,
                                 .iconName = "icons4_sepia",
                                 .nameKey = "IDS_SEPIA_NAME",
                                 .helpKey = "HLP_SEPIA",
                                 .defaultText = "Sepia=000",
                                 .gloss = "Sepia tone",
                                 .make = MakeFilter<CSepiaFilter>,
                                 .describe = CSepiaFilter::Describe};

std::span<const ParameterRow<SepiaParameters>> SepiaParameters::Rows() {
  static constexpr ParameterRow<SepiaParameters> kRows[] = {
      {"Sepia", "Sepia=%.3d", &SepiaParameters::keep, KeptShare("strength of the brown tone")}};
  return kRows;
}

void CSepiaFilter::ChangeRow(BYTE* colour, BYTE*, int width) {
  kernels::Choose<kernels::PointKernelTable>().sepia(colour, width, active.keep);
}
