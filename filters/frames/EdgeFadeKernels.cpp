#include "filters/frames/EdgeFadeKernels.h"

#include "filters/frames/EdgeFadeLoops.h"

namespace kernels {

void FadeByShares(std::uint8_t* mask, FadeNumbers shares, int count) {
  FadeExactly(mask, ByShares{shares}, 0, count);
}

void FadeByWays(std::uint8_t* mask, FadeNumbers ways, double across, int count) {
  FadeExactly(mask, ByWays{ways, across}, 0, count);
}

void FadeByDistance(std::uint8_t* mask, FadeNumbers ways, double across, int count) {
  FadeExactly(mask, ByDistance{ways, across}, 0, count);
}

const EdgeFadeKernels& EdgeFadeKernels::Plain() {
  static constexpr EdgeFadeKernels kPlain = {FadeByShares, FadeByWays, FadeByDistance};
  return kPlain;
}

}  // namespace kernels
