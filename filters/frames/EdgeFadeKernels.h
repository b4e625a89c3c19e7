// Masks weakened by shares, on plain rows.
//
// A share is what is left of the opacity, 0..1, truncated for each pixel. Rows and widths as in
// PointKernels.h.
#pragma once

#include <cstdint>

#include "filters/pixels/simd/Simd.h"

namespace kernels {

// The same numbers twice: in full, and rounded for kernels that are often right with that.
struct FadeNumbers {
  const double* exact;
  const float* about;
};

// With a share for each pixel.
void FadeByShares(std::uint8_t* mask, FadeNumbers shares, int count);

// Where two edges meet: how far outwards each pixel lies along the row and all of them across it,
// 0..1, the latter above 0. The further of the two counts, or the distance.
void FadeByWays(std::uint8_t* mask, FadeNumbers ways, double across, int count);
void FadeByDistance(std::uint8_t* mask, FadeNumbers ways, double across, int count);

// Two pieces of a row that do not overlap: the right one ends where it says, and its pixels lie as
// far outwards as those of the left one, from its end on.
struct MirroredMasks {
  std::uint8_t* left;
  std::uint8_t* rightEnd;
};
void FadeMirroredByWays(const MirroredMasks& masks, FadeNumbers ways, double across, int count);
void FadeMirroredByDistance(const MirroredMasks& masks, FadeNumbers ways, double across, int count);

// The same functions, byte for byte, at the speed of a vector unit.
struct EdgeFadeKernels {
  decltype(&FadeByShares) byShares;
  decltype(&FadeByWays) byWays;
  decltype(&FadeByDistance) byDistance;
  decltype(&FadeMirroredByWays) mirroredByWays;
  decltype(&FadeMirroredByDistance) mirroredByDistance;

  // For Choose.
  static const EdgeFadeKernels& Plain();
  static const EdgeFadeKernels& Avx2();
  static const EdgeFadeKernels& Avx512();
};

}  // namespace kernels
