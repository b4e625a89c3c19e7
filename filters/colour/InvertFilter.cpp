#include "filters/colour/InvertFilter.h"

#include "base/Guid.h"
#include "filters/pixels/PointKernelTable.h"

const FilterClass kInvertClass = {.sortKey = 39,
                                  .className = "CInvertFilter",
                                  .progId = "ZNFilter.Invert.1",
                                  .classId = base::Guid("{A0F819E8-8CD3-48AC-9F2A-49279D0797C4}"),
                                  .order = 5000,
                                  .iconName = "icons4_invert",
                                  .nameKey = "IDS_INVERT_NAME",
                                  .helpKey = "HLP_INVERT",
                                  .defaultText = "Inversity=000",
                                  .gloss = "Negative",
                                  .make = MakeFilter<CInvertFilter>,
                                  .describe = CInvertFilter::Describe};

std::span<const ParameterRow<InvertParameters>> InvertParameters::Rows() {
  static constexpr ParameterRow<InvertParameters> kRows[] = {{"Inversity",
                                                              "Inversity=%.3d",
                                                              &InvertParameters::amount,
                                                              {.gloss = "share of the negative"}}};
  return kRows;
}

void CInvertFilter::ChangeRow(BYTE* colour, BYTE*, int width) {
  kernels::Choose<kernels::PointKernelTable>().invert(colour, base::ColourBytes(width),
                                                      active.amount);
}
