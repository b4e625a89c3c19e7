// Changes of hue, lightness and saturation on plain rows, and their faster forms by vector unit.
//
// Rows and widths as in PointKernels.h. A pixel goes through RgbToHls and HlsToRgb of
// ColourConversion.h, in doubles all the way: a level that truncation loses there is lost here too.
// Lightness and saturation are limited to 0..1 after their change.
#pragma once

#include <cstdint>

#include "filters/pixels/simd/Simd.h"

namespace kernels {

// One entry for each whole degree of hue; a hue of 359.9 has the last one.
inline constexpr int kHues = 360;

// What the saturation of a hue is multiplied with.
struct HueFactors {
  double byHue[kHues] = {};
};

// What becomes of the pixels of a hue.
struct alignas(32) HueChange {
  double shift = 0;       // added to the hue, -360..360
  double saturation = 0;  // factor, finite
  double lightness = 0;   // added
};
struct HueChanges {
  HueChange byHue[kHues];
  double greyLightness = 0;  // added where there is no saturation
};

// Multiplies the saturation. A grey keeps its bytes, and every other pixel has a saturation above
// 0, so that an infinite factor gives 1.
void Saturate(std::uint8_t* colour, int width, double factor);

// The same with a factor for each hue.
void SaturateByHue(std::uint8_t* colour, int width, const HueFactors& factors);

// Changes all three. A grey is converted there and back like any pixel.
void ChangeByHue(std::uint8_t* colour, int width, const HueChanges& changes);

// The same functions, byte for byte, at the speed of a vector unit.
struct HlsKernelTable {
  void (*saturate)(std::uint8_t* colour, int width, double factor);
  void (*saturateByHue)(std::uint8_t* colour, int width, const HueFactors& factors);
  void (*changeByHue)(std::uint8_t* colour, int width, const HueChanges& changes);

  // For Choose.
  static const HlsKernelTable& Plain();
  static const HlsKernelTable& Avx2();
  static const HlsKernelTable& Avx512();
};

}  // namespace kernels
