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

const EdgeFadeKernels& EdgeFadeKernels::Plain() {
  static constexpr EdgeFadeKernels kPlain = {FadeByShares, FadeByWays, FadeByDistance};
  return kPlain;
}

}  // namespace kernels
