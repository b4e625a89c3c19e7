// Runs a Gaussian method over the rows of a picture, in bands.
#pragma once

#include <atomic>
#include <cstdint>

#include "filters/detail/GaussKernels.h"
#include "filters/detail/GaussTaps.h"

namespace kernels {

enum class GaussMethod { Blur, Sharpen, SharpenBrightness, SelectiveBlur };

// What shall become of a picture. Threshold and amount as in GaussNumbers.
struct GaussChange {
  GaussMethod method;
  GaussTaps taps;
  float threshold = 0.0f;
  float amount = 0.0f;
};

// Changes `width` pixels of `height` rows in place. The rows may lie anywhere, but must not
// overlap. What lies outside is a copy of the pixel at the edge. Finishes the last row first.
//
// The memory beside the rows is bounded: a band of rows in floating point, in strips of columns
// where a band would be too large. `abort` is tested before each row of each pass. False when it
// was set, or without memory; rows and strips that were finished by then stay changed.
bool ChangeByGauss(std::uint8_t* const* rows, int width, int height, const GaussChange& change,
                   SimdLevel level, const std::atomic<bool>& abort);

}  // namespace kernels
