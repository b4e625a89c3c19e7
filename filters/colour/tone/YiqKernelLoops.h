// The YIQ kernel over vectors of any width.
#pragma once

#include "filters/colour/tone/YiqArithmetic.h"
#include "filters/colour/tone/YiqKernels.h"
#include "filters/pixels/simd/PixelBlocks.h"

namespace kernels {
namespace {

inline void MapLuminanceLoop(std::uint8_t* colour, int width, const ByteTable& table) {
  const ByteLookup lookUp(table);
  ChangeChannels(
      colour, width, [&](Channels & c) __attribute__((always_inline)) {
        Plane luminance;
        Luminances(c, luminance);
        luminance.Set(lookUp(luminance.Get()));
        for (int i = 0; i < kPixels; i += kLanes<Doubles>) {
          const Rgb<Doubles> rgb = {LoadDoubles(c.red.at + i), LoadDoubles(c.green.at + i),
                                    LoadDoubles(c.blue.at + i)};
          const Rgb<Doubles> mapped = WithLuminance(rgb, LoadDoubles(luminance.at + i));
          StoreTruncated(c.red.at + i, mapped.red);
          StoreTruncated(c.green.at + i, mapped.green);
          StoreTruncated(c.blue.at + i, mapped.blue);
        }
      });
}

}  // namespace
}  // namespace kernels
