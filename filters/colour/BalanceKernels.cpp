#include "filters/colour/BalanceKernels.h"

#include <algorithm>

#include "base/Arithmetic.h"
#include "base/Rows.h"
#include "filters/pixels/ColourConversion.h"

namespace kernels {
namespace {

using base::kBlue;
using base::kGreen;
using base::kRed;

double LimitShare(double share) {
  return std::min(std::max(share, 0.0), 1.0);
}

const BalanceEntry& EntryOf(const std::uint8_t* pixel, const Balance& balance) {
  double hue, lightness, saturation;
  RgbToHls(pixel[kRed], pixel[kGreen], pixel[kBlue], hue, lightness, saturation);
  return balance.entries[saturation == 0.0 ? kGreyEntry : static_cast<int>(hue)];
}

void Recolour(std::uint8_t* pixel, const BalanceEntry& entry) {
  double hue, lightness, saturation;
  RgbToHls(pixel[kRed], pixel[kGreen], pixel[kBlue], hue, lightness, saturation);
  HlsToRgb(hue, LimitShare(lightness + entry.lightness), LimitShare(saturation * entry.saturation),
           pixel[kRed], pixel[kGreen], pixel[kBlue]);
}

}  // namespace

void BalanceColours(std::uint8_t* colour, int width, const Balance& balance) {
  for (int x = 0; x < width; ++x, colour += base::kBytesPerPixel) {
    const BalanceEntry& entry = EntryOf(colour, balance);
    for (int channel = 0; channel < base::kBytesPerPixel; ++channel) {
      colour[channel] = base::ClampByte(colour[channel] + entry.shifts[channel]);
    }
    if (entry.recolours) Recolour(colour, entry);
  }
}

const BalanceKernels& BalanceKernels::Plain() {
  static constexpr BalanceKernels kPlain = {BalanceColours};
  return kPlain;
}

}  // namespace kernels
