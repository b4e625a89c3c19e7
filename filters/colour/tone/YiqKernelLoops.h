// The loop of the YIQ kernels over vectors of any width: every file that includes this has a copy
// of its own, compiled for the processors of that file.
//
// `Wide` is what such a file brings: as in HlsKernelLoops.h, and MapBytes through a table.
#pragma once

#include <cstdint>

#include "filters/colour/tone/YiqArithmetic.h"
#include "filters/colour/tone/YiqKernels.h"
#include "filters/pixels/simd/WideDoubles.h"

namespace kernels {
namespace {

template <class Wide>
[[gnu::always_inline]] inline void MapLuminanceOfBlock(Plane<Wide>& blue, Plane<Wide>& green,
                                                       Plane<Wide>& red, const ByteTable& table) {
  Plane<Wide> luminance;
  for (int i = 0; i < Wide::kPixels; ++i) {
    luminance.bytes[i] = LuminanceIndex(red.bytes[i], green.bytes[i], blue.bytes[i]);
  }
  Wide::MapBytes(luminance, table);
  for (int i = 0; i < Wide::kPixels; i += Wide::kLanes) {
    const Rgb<Wide> mapped = WithLuminance<Wide>(
        {Wide::Load(red.bytes + i), Wide::Load(green.bytes + i), Wide::Load(blue.bytes + i)},
        Wide::Load(luminance.bytes + i));
    Wide::Store(red.bytes + i, mapped.red);
    Wide::Store(green.bytes + i, mapped.green);
    Wide::Store(blue.bytes + i, mapped.blue);
  }
}

template <class Wide>
inline void MapLuminanceLoop(std::uint8_t* colour, int width, const ByteTable& table) {
  using Bytes = Plane<Wide>;
  Wide::template ChangePlanes<Wide>(
      colour, width, [&](Bytes & blue, Bytes & green, Bytes & red) __attribute__((always_inline)) {
        MapLuminanceOfBlock(blue, green, red, table);
      });
}

}  // namespace
}  // namespace kernels
