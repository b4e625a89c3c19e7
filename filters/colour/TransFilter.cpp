#include "filters/colour/TransFilter.h"

#include "base/Guid.h"
#include "filters/colour/KeptShareParameters.h"
#include "filters/pixels/PointKernelTable.h"

const FilterClass kTransClass = {.sortKey = 40,
                                 .className = "CTransFilter",
                                 .progId = "ZNFilter.Transparency.1",
                                 .classId = base::Guid("{60F68F21-1F45-4E4B-9B26-7D3AF93256DD}"),
                                 .order = 5000,
                                 .iconName = "icons4_transpar",
                                 .nameKey = "IDS_TRANS_NAME",
                                 .helpKey = "HLP_TRANS",
                                 .defaultText = "Transparency=000",
                                 .gloss = "Transparency",
                                 .make = MakeFilter<CTransFilter>,
                                 .describe = CTransFilter::Describe};

std::span<const ParameterRow<TransParameters>> TransParameters::Rows() {
  static constexpr ParameterRow<TransParameters> kRows[] = {{"Transparency", "Transparency=%.3d",
                                                             &TransParameters::keep,
                                                             KeptShare("how much shines through")}};
  return kRows;
}

void CTransFilter::ChangeRow(BYTE*, BYTE* mask, int width) {
  kernels::Choose<kernels::PointKernelTable>().fade(mask, static_cast<std::size_t>(width),
                                                    active.keep);
}
