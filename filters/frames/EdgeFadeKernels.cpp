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

void FadeMirroredByWays(const MirroredMasks& masks, FadeNumbers ways, double across, int count) {
  FadeExactly(masks, ByWays{ways, across}, 0, count);
}

void FadeMirroredByDistance(const MirroredMasks& masks, FadeNumbers ways, double across,
                            int count) {
  FadeExactly(masks, ByDistance{ways, across}, 0, count);
}

const EdgeFadeKernels& EdgeFadeKernels::Plain() {
  static constexpr EdgeFadeKernels kPlain = {FadeByShares, FadeByWays, FadeByDistance,
                                             FadeMirroredByWays, FadeMirroredByDistance};
  return kPlain;
}

}  // namespace kernels
