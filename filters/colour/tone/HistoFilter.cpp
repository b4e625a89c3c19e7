#include "filters/colour/tone/HistoFilter.h"

#include "base/Guid.h"
#include "filters/colour/tone/Equalisation.h"
#include "filters/pixels/Histogram.h"

const FilterClass kHistoClass = {.sortKey = 20,
                                 .className = "CHistoFilter",
                                 .progId = "ZNFilter.Histo.1",
                                 .classId = base::Guid("{AF08445B-1C44-4B8E-832C-CB447B6AF7A2}"),
                                 .order = 5000,
                                 .iconName = "icons4_tonaladj",
                                 .nameKey = "IDS_HISTO_NAME",
                                 .helpKey = "HLP_HISTO",
                                 .defaultText = "Intensity=000",
                                 .gloss = "Equalise the histogram",
                                 .make = MakeFilter<CHistoFilter>,
                                 .describe = CHistoFilter::Describe};

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
  const auto count = [&](kernels::LevelCounter& part, int first, int end) {
    for (int y = first; y < end && !abort; ++y) {
      if (r.colourRows && r.colourRows[y]) part.AddLuminance(r.colourRows[y], r.width);
    }
    return !abort;
  };
  if (!base::CountInBands(r.height, base::RowsPerBand(r.width), counter, count)) return false;
  const kernels::LuminanceFactors factors =
      kernels::EqualisingFactors(counter.Total(), Active().intensity);
  return r.ChangePixels(abort, [&](BYTE* colour, BYTE*, int pixels) {
    if (colour)
      kernels::Choose<kernels::LuminanceKernelTable>().scaleByLuminance(colour, pixels, factors);
  });
}
