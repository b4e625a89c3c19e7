// Loops that fade masks, which the compiler widens: every file that includes this has a copy of its
// own, compiled for the processors of that file. Doubles all the way, in the order written.
#pragma once

#include <cstdint>

#include "filters/frames/EdgeFadeKernels.h"

namespace kernels {
namespace {

// What is left of the opacity at a depth of 0 (the edge) to 1.
[[gnu::always_inline]] inline double ShareAtDepth(double depth) {
  return depth * depth * (3 - 2 * depth);
}

[[gnu::always_inline]] inline std::uint8_t Faded(std::uint8_t mask, double share) {
  return static_cast<std::uint8_t>(255 - static_cast<int>((255 - mask) * share));
}

inline void FadeBySharesLoop(std::uint8_t* mask, const double* shares, int count) {
  for (int x = 0; x < count; ++x) mask[x] = Faded(mask[x], shares[x]);
}

inline void FadeByWaysLoop(std::uint8_t* mask, const double* ways, double across, int count) {
  for (int x = 0; x < count; ++x) {
    const double further = ways[x] > across ? ways[x] : across;
    mask[x] = Faded(mask[x], ShareAtDepth(1 - further));
  }
}

// A root that tells errors nobody asks for would not be widened.
[[gnu::optimize("no-math-errno")]] inline void FadeByDistanceLoop(std::uint8_t* mask,
                                                                  const double* ways, double across,
                                                                  int count) {
  for (int x = 0; x < count; ++x) {
    const double distance = __builtin_sqrt(ways[x] * ways[x] + across * across);
    mask[x] = Faded(mask[x], ShareAtDepth(1 - (distance < 1 ? distance : 1)));
  }
}

constexpr EdgeFadeKernels kEdgeFadeLoops = {FadeBySharesLoop, FadeByWaysLoop, FadeByDistanceLoop};

}  // namespace
}  // namespace kernels
