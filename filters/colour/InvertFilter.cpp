#include "filters/colour/InvertFilter.h"

#include "filters/tools/PointKernelTable.h"

std::span<const ParameterRow<InvertParameters>> InvertParameters::Rows() {
  static constexpr ParameterRow<InvertParameters> kRows[] = {{"Inversity",
                                                              "Inversity=%.3d",
                                                              &InvertParameters::amount,
                                                              {.gloss = "share of the negative"}}};
  return kRows;
}

void CInvertFilter::Commit() {
  ParameterFilter::Commit();
  table = kernels::BuildInvertTable(active.amount);
}

void CInvertFilter::ChangeRow(BYTE* colour, BYTE*, int width) {
  kernels::ActivePointKernels().invert(colour, base::ColourBytes(width), active.amount, table);
}
