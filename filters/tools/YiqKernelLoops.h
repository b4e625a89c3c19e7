// The loop of the YIQ kernels over vectors of any width: every file that includes this has a copy
// of its own, compiled for the processors of that file.
#pragma once

#include <cstdint>

#include "filters/tools/WideDoubles.h"
#include "filters/tools/YiqArithmetic.h"

namespace kernels {
namespace {

// `mapBytes` takes bytes through the table.
template <class Wide, class MapBytes>
[[gnu::always_inline]] inline void MapLuminanceOfBlock(Plane<Wide>& blue, Plane<Wide>& green,
                                                       Plane<Wide>& red, const MapBytes& mapBytes) {
  Plane<Wide> luminance;
  for (int i = 0; i < Wide::kPixels; ++i) {
    luminance.bytes[i] = LuminanceIndex(red.bytes[i], green.bytes[i], blue.bytes[i]);
  }
  mapBytes(luminance.bytes);
  for (int i = 0; i < Wide::kPixels; i += Wide::kLanes) {
    const Rgb<Wide> mapped = WithLuminance<Wide>(
        {Wide::Load(red.bytes + i), Wide::Load(green.bytes + i), Wide::Load(blue.bytes + i)},
        Wide::Load(luminance.bytes + i));
    Wide::Store(red.bytes + i, mapped.red);
    Wide::Store(green.bytes + i, mapped.green);
    Wide::Store(blue.bytes + i, mapped.blue);
  }
}

}  // namespace
}  // namespace kernels
