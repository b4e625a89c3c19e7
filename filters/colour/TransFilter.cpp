#include "filters/colour/TransFilter.h"

#include "filters/colour/KeptShare.h"
#include "filters/tools/PointKernelTable.h"

std::span<const ParameterRow<TransParameters>> TransParameters::Rows() {
  static constexpr ParameterRow<TransParameters> kRows[] = {{"Transparency", "Transparency=%.3d",
                                                             &TransParameters::keep,
                                                             KeptShare("how much shines through")}};
  return kRows;
}

void CTransFilter::Commit() {
  ParameterFilter::Commit();
  table = kernels::BuildTransparencyTable(active.keep);
}

void CTransFilter::ChangeRow(BYTE*, BYTE* mask, int width) {
  kernels::ActivePointKernels().fade(mask, static_cast<std::size_t>(width), active.keep, table);
}
