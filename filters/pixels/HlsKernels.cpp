#include "filters/pixels/HlsKernels.h"

#include "base/Rows.h"
#include "filters/pixels/ColourConversion.h"
#include "filters/pixels/HlsChanges.h"

namespace kernels {
namespace {

using base::kBlue;
using base::kGreen;
using base::kRed;

template <class Change>
void ChangeRow(std::uint8_t* colour, int width, const Change& change) {
  for (int x = 0; x < width; ++x, colour += base::kBytesPerPixel) {
    Hls<double> hls;
    RgbToHls(colour[kRed], colour[kGreen], colour[kBlue], hls.hue, hls.lightness, hls.saturation);
    if (Change::kKeepsGrey && hls.saturation == 0.0) continue;
    change(hls);
    HlsToRgb(hls.hue, hls.lightness, hls.saturation, colour[kRed], colour[kGreen], colour[kBlue]);
  }
}

}  // namespace

void Saturate(std::uint8_t* colour, int width, double factor) {
  ChangeRow(colour, width, Saturation{factor});
}

void SaturateByHue(std::uint8_t* colour, int width, const HueFactors& factors) {
  ChangeRow(colour, width, SaturationByHue{factors});
}

void ChangeByHue(std::uint8_t* colour, int width, const HueChanges& changes) {
  ChangeRow(colour, width, ChangeAll{changes});
}

const HlsKernelTable& HlsKernelTable::Plain() {
  static constexpr HlsKernelTable kPlain = {Saturate, SaturateByHue, ChangeByHue};
  return kPlain;
}

}  // namespace kernels
