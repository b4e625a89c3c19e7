// Fading over vectors of any width: in single precision, which is right wherever the product does
// not lie so close to a whole number that its truncation is in doubt. A vector with such a pixel is
// done in doubles.
#pragma once

#include <cstdint>
#include <utility>

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

// What masks become: 256 less the opacity that is kept, 255.5 at most, as a mask of 255 is in no
// doubt. `shift` is 256 - 255 * share.
[[gnu::always_inline]] inline Floats Faded(const std::uint8_t* mask, Floats share, Floats shift) {
  return Min(MultiplyAdd(LoadFloats(mask), share, shift), All<Floats>(255.5f));
}
[[gnu::always_inline]] inline Floats ShiftOf(Floats share) {
  return MultiplyAdd(share, All<Floats>(-255), All<Floats>(256));
}
[[gnu::always_inline]] inline bool IsInDoubt(Floats faded) {
  return IsAnyWithin(faded - Nearest(faded), kDoubt);
}

template <class Kind>
[[gnu::always_inline]] inline void Fade(std::uint8_t* mask, const Kind& kind, int count) {
  int x = 0;
  for (; x + kFadedTogether <= count; x += kFadedTogether) {
    const Floats share = AboutShares(kind, x);
    const Floats faded = Faded(mask + x, share, ShiftOf(share));
    if (IsInDoubt(faded)) {
      FadeExactly(mask, kind, x, x + kFadedTogether);
    } else {
      StoreTruncated(mask + x, faded);
    }
  }
  FadeExactly(mask, kind, x, count);
}

template <int... kLane>
[[gnu::always_inline]] inline Floats Reversed(Floats values, std::integer_sequence<int, kLane...>) {
  return __builtin_shufflevector(values, values, (kLanes<Floats> - 1 - kLane)...);
}
[[gnu::always_inline]] inline Floats Reversed(Floats values) {
  return Reversed(values, std::make_integer_sequence<int, kLanes<Floats>>());
}

template <class Kind>
[[gnu::always_inline]] inline void FadeMirrored(const MirroredMasks& masks, const Kind& kind,
                                                int count) {
  int x = 0;
  for (; x + kFadedTogether <= count; x += kFadedTogether) {
    std::uint8_t* const right = masks.rightEnd - x - kFadedTogether;
    const Floats share = AboutShares(kind, x);
    const Floats shift = ShiftOf(share);
    const Floats left = Faded(masks.left + x, share, shift);
    const Floats mirrored = Faded(right, Reversed(share), Reversed(shift));
    if (IsInDoubt(left) || IsInDoubt(mirrored)) {
      FadeExactly(masks, kind, x, x + kFadedTogether);
    } else {
      StoreTruncated(masks.left + x, left);
      StoreTruncated(right, mirrored);
    }
  }
  FadeExactly(masks, kind, x, count);
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

inline void FadeMirroredByWaysLoop(const MirroredMasks& masks, FadeNumbers ways, double across,
                                   int count) {
  FadeMirrored(masks, ByWays{ways, across}, count);
}

inline void FadeMirroredByDistanceLoop(const MirroredMasks& masks, FadeNumbers ways, double across,
                                       int count) {
  FadeMirrored(masks, ByDistance{ways, across}, count);
}

constexpr EdgeFadeKernels kEdgeFadeLoops = {FadeBySharesLoop, FadeByWaysLoop, FadeByDistanceLoop,
                                            FadeMirroredByWaysLoop, FadeMirroredByDistanceLoop};

}  // namespace
}  // namespace kernels
