// Histogram equalisation.
#pragma once

#include "filters/pixels/Histogram.h"
#include "filters/pixels/LuminanceKernels.h"

namespace kernels {

// The factors that lead each luminance to its place on the cumulative curve of the histogram, each
// count taken to the power of `percent` / 100. Black has factor 0.
LuminanceFactors EqualisingFactors(const Histogram& histogram, int percent);

}  // namespace kernels
