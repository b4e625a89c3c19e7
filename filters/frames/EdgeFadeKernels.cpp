#include "filters/frames/EdgeFadeKernels.h"

#include "filters/frames/EdgeFadeLoops.h"

namespace kernels {

void FadeByShares(std::uint8_t* mask, const double* shares, int count) {
  FadeBySharesLoop(mask, shares, count);
}

void FadeByWays(std::uint8_t* mask, const double* ways, double across, int count) {
  FadeByWaysLoop(mask, ways, across, count);
}

void FadeByDistance(std::uint8_t* mask, const double* ways, double across, int count) {
  FadeByDistanceLoop(mask, ways, across, count);
}

const EdgeFadeKernels& EdgeFadeKernelsFor(SimdLevel level) {
  static constexpr EdgeFadeKernels kPlain = {FadeByShares, FadeByWays, FadeByDistance};
#if defined(__x86_64__)
  if (level == SimdLevel::Avx512) return Avx512EdgeFadeKernels();
  if (level == SimdLevel::Avx2) return Avx2EdgeFadeKernels();
#else
  static_cast<void>(level);
#endif
  return kPlain;
}

const EdgeFadeKernels& ActiveEdgeFadeKernels() {
  static const EdgeFadeKernels& kernels = EdgeFadeKernelsFor(ActiveSimdLevel());
  return kernels;
}

}  // namespace kernels
