#include "filters/colour/HistoFilter.h"

#include "filters/tools/Equalisation.h"
#include "filters/tools/Histogram.h"

std::span<const ParameterRow<HistoParameters>> HistoParameters::Rows() {
  static constexpr ParameterRow<HistoParameters> kRows[] = {
      {"Intensity",
       "Intensity=%.3d",
       &HistoParameters::intensity,
       {.gloss = "how much the frequency of a level counts"}}};
  return kRows;
}

bool CHistoFilter::ChangeRectangle(const PullRectangle& r) {
  // The rows at the front of the caller's array are counted, wherever in it the rectangle lies.
  kernels::LevelCounter counter;
  for (int y = 0; y < r.height; ++y) {
    if (abort) return false;
    if (r.colourRows && r.colourRows[y]) counter.AddLuminance(r.colourRows[y], r.width);
  }
  const kernels::LuminanceFactors factors =
      kernels::EqualisingFactors(counter.Total(), active.intensity);
  return r.ChangeRows(abort, [&](BYTE* colour, BYTE*) {
    if (colour) kernels::ActiveLuminanceKernels().scaleByLuminance(colour, r.width, factors);
  });
}
