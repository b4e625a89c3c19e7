#include "filters/pixels/Compose.h"

#include "base/Rows.h"

namespace kernels {

using base::kBytesPerPixel;

void ComposeRow(std::uint8_t* colour, std::uint8_t* mask, const std::uint8_t* overColour,
                const std::uint8_t* overMask, int width) {
  if (!colour) {
    for (int x = 0; x < width; ++x)
      mask[x] = static_cast<std::uint8_t>(overMask[x] * mask[x] / 255);
    return;
  }
  for (int x = 0; x < width; ++x, colour += kBytesPerPixel, overColour += kBytesPerPixel) {
    const int s = overMask[x];
    const int t = mask[x];
    const int laid = (255 - s) * 255;
    const int kept = (255 - t) * s;
    if (laid + kept == 0) continue;
    for (int channel = 0; channel < kBytesPerPixel; ++channel) {
      colour[channel] = static_cast<std::uint8_t>(
          (overColour[channel] * laid + colour[channel] * kept) / (laid + kept));
    }
    mask[x] = static_cast<std::uint8_t>(s * t / 255);
  }
}

}  // namespace kernels
