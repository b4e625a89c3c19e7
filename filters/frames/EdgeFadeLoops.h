// The shares of faded masks in doubles, in the order written: exact, for the plain kernels and for
// the pixels that the fast ones are in doubt of.
#pragma once

#include <cstdint>

#include "filters/frames/EdgeFadeKernels.h"

namespace kernels {
namespace {

// What is left of the opacity at a depth of 0 (the edge) to 1.
[[gnu::always_inline]] inline double ShareAtDepth(double depth) {
  return depth * depth * (3 - 2 * depth);
}

// Share(x) of each kind is what is left of the opacity of pixel x.
struct ByShares {
  FadeNumbers shares;
  [[gnu::always_inline]] double Share(int x) const { return shares.exact[x]; }
};

struct ByWays {
  FadeNumbers ways;
  double across;
  [[gnu::always_inline]] double Share(int x) const {
    const double way = ways.exact[x];
    return ShareAtDepth(1 - (way > across ? way : across));
  }
};

struct ByDistance {
  FadeNumbers ways;
  double across;
  [[gnu::always_inline]] double Share(int x) const {
    const double way = ways.exact[x];
    const double distance = __builtin_sqrt(way * way + across * across);
    return ShareAtDepth(1 - (distance < 1 ? distance : 1));
  }
};

[[gnu::always_inline]] inline std::uint8_t FadedMask(std::uint8_t mask, double share) {
  return static_cast<std::uint8_t>(255 - static_cast<int>((255 - mask) * share));
}

template <class Kind>
inline void FadeExactly(std::uint8_t* mask, const Kind& kind, int first, int end) {
  for (int x = first; x < end; ++x) mask[x] = FadedMask(mask[x], kind.Share(x));
}
template <class Kind>
inline void FadeExactly(const MirroredMasks& masks, const Kind& kind, int first, int end) {
  FadeExactly(masks.left, kind, first, end);
  for (int x = first; x < end; ++x) {
    std::uint8_t& mirrored = masks.rightEnd[-1 - x];
    mirrored = FadedMask(mirrored, kind.Share(x));
  }
}

}  // namespace
}  // namespace kernels
