// Fading over vectors of any width: in single precision, which is right wherever the product does
// not lie so close to a whole number that its truncation is in doubt. A vector with such a pixel is
// done in doubles.
#pragma once

#include <cstdint>

#include "filters/frames/EdgeFadeLoops.h"
#include "filters/pixels/simd/Vectors.h"

namespace kernels {
namespace {

constexpr int kFadedTogether = kLanes<Floats>;

// All errors together, those of the root among them, stay below 2^-20.
constexpr float kDoubt = 1.0f / 4096;

[[gnu::always_inline]] inline Floats AboutAtDepth(Floats depth) {
  const Floats within = Max(depth, Floats{});
  return within * within * MultiplyAdd(within, All<Floats>(-2), All<Floats>(3));
}

// Share(x) of each kind for a vector of pixels.
[[gnu::always_inline]] inline Floats AboutShares(const ByShares& kind, int x) {
  return Load<Floats>(kind.shares.about + x);
}
[[gnu::always_inline]] inline Floats AboutShares(const ByWays& kind, int x) {
  const auto way = Load<Floats>(kind.ways.about + x);
  return AboutAtDepth(1 - Max(way, All<Floats>(kind.across)));
}
[[gnu::always_inline]] inline Floats AboutShares(const ByDistance& kind, int x) {
  const auto way = Load<Floats>(kind.ways.about + x);
  return AboutAtDepth(1 - Root(MultiplyAdd(way, way, All<Floats>(kind.across * kind.across))));
}

template <class Kind>
[[gnu::always_inline]] inline void Fade(std::uint8_t* mask, const Kind& kind, int count) {
  int x = 0;
  for (; x + kFadedTogether <= count; x += kFadedTogether) {
    const Floats opacity = 255 - LoadFloats(mask + x);
    // Where truncation gives 0, nothing is in doubt.
    const Floats kept = Max(opacity * AboutShares(kind, x), All<Floats>(0.5f));
    if (IsAny(Magnitude(kept - Nearest(kept)) < kDoubt)) {
      FadeExactly(mask, kind, x, x + kFadedTogether);
    } else {
      StoreTruncated(mask + x, 256 - kept);
    }
  }
  FadeExactly(mask, kind, x, count);
}

inline void FadeBySharesLoop(std::uint8_t* mask, FadeNumbers shares, int count) {
  Fade(mask, ByShares{shares}, count);
}

inline void FadeByWaysLoop(std::uint8_t* mask, FadeNumbers ways, double across, int count) {
  Fade(mask, ByWays{ways, across}, count);
}

inline void FadeByDistanceLoop(std::uint8_t* mask, FadeNumbers ways, double across, int count) {
  Fade(mask, ByDistance{ways, across}, count);
}

constexpr EdgeFadeKernels kEdgeFadeLoops = {FadeBySharesLoop, FadeByWaysLoop, FadeByDistanceLoop};

}  // namespace
}  // namespace kernels
