// Tone curves as byte tables: gamma, contrast, and the curve of light and shadow; the factor of a
// saturation control.
//
// Controls are taken as they come, beyond the range of any dialog too.
#pragma once

#include "filters/pixels/ByteTableKernels.h"

namespace kernels {

// How far a control must go down, and up, to change the exponent of a gamma by 1.
struct GammaRule {
  double down;
  double up;
};
inline constexpr GammaRule kExposureGamma = {50.0, 150.0};  // 3 at -100, 1/3 at 100
inline constexpr GammaRule kOptimizeGamma = {25.0, 125.0};  // 5 at -100, 1/5 at 100

// 1 at 0, larger below (darker), smaller above (brighter).
double GammaExponent(int control, const GammaRule& rule);

// 255 * (i / 255) ^ exponent, truncated, low eight bits.
ByteTable BuildGammaTable(double exponent);

// One table for two, one after the other.
ByteTable Compose(const ByteTable& first, const ByteTable& second);

// The slope turns around the middle level, which `brightness` moves: 100 makes everything white.
ByteTable BuildContrastTable(int brightness, int contrast);

// A natural spline through black, shadows, middle, lights and white, then a gamma.
ByteTable BuildOptimizeTable(int gamma, int lights, int shadows);

// 1 at 0, 0 at -100, 101 at 100; infinite at 101, and negative beyond either end.
double SaturationFactor(double percent);

}  // namespace kernels
