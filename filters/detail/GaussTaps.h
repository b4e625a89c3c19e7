// The one-dimensional Gaussian kernel: a bell cut off at a window.
#pragma once

#include <vector>

namespace kernels {

// Values for each distance from the centre, which comes first: the bell is symmetrical.
using GaussTaps = std::vector<float>;

// `Radius` of a text as the filters use it: 0.1..1000 pixels, 0.1 for what is no number.
double UsedGaussRadius(double radius);

// The radius at a zoom of the picture. A zoom that is not finite counts as 1. What leaves
// -4000..4000 is cut, so that a kernel stays within the memory of a filter.
double ZoomedGaussRadius(double usedRadius, double zoom);

// The sigma that blurring filters widen or narrow by percent, 1..500.
double WidenedGaussSigma(double usedRadius, int percent);

// The bell for a zoomed radius: its whole pixels to each side, at least one. The tap of the centre
// is 1. Taps at the end that are too small to count are left out; a sigma of 0 leaves the centre.
GaussTaps MakeGaussTaps(double zoomedRadius, double sigma);

// How many pixels to each side the kernel reaches.
inline int ReachOf(const GaussTaps& taps) {
  return static_cast<int>(taps.size()) - 1;
}

// Scales the taps so that those of both sides add up to 1.
void NormalizeGaussTaps(GaussTaps& taps);

}  // namespace kernels
