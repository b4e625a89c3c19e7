#include "filters/frames/FrameKernels.h"

#include <algorithm>

#include "base/Arithmetic.h"
#include "base/Rows.h"
#include "filters/frames/FrameKernelLoops.h"

namespace kernels {

using base::kBytesPerPixel;

void AddRelief(std::uint8_t* colour, const std::uint8_t* relief, int width, bool isInner) {
  for (int x = 0; x < width; ++x, colour += kBytesPerPixel) {
    const int added = isInner ? 128 - relief[x] : relief[x] - 128;
    for (int channel = 0; channel < kBytesPerPixel; ++channel) {
      colour[channel] = base::ClampByte(colour[channel] + added);
    }
  }
}

void KeepInside(std::uint8_t* mask, const std::uint8_t* pictureMask, int width) {
  for (int x = 0; x < width; ++x) {
    mask[x] = static_cast<std::uint8_t>(255 - (255 - pictureMask[x]) * mask[x] / 255);
  }
}

ByteTable BuildAttenuationTable(int density, int percent) {
  const std::int64_t share = std::int64_t{density} * std::clamp(percent, 50, 100) * 255 / 10000;
  ByteTable table;
  for (int m = 0; m < 256; ++m) {
    table[static_cast<std::size_t>(m)] = base::LowByte(255 - (255 - m) * share / 255);
  }
  return table;
}

const FrameKernels& FrameKernels::Plain() {
  static constexpr FrameKernels kPlain = {ComposeRow, AddRelief, SmoothLoop,  ReliefLoop,
                                          GrowLoop,   BlurLoop,  FractionLoop};
  return kPlain;
}

}  // namespace kernels
