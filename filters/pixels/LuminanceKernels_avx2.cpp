// Luminance kernels for AVX2.
#include "filters/pixels/ByteLookup_avx2.h"
#include "filters/pixels/simd/PixelBlocks_avx2.h"
// Behind the two that it is written for.
#include "filters/pixels/LuminanceLoops.h"

namespace kernels {
namespace {

// The packs limit to 255.
[[gnu::always_inline]] inline __m128i ScaledFour(const std::uint8_t* levels,
                                                 const double* factors) {
  const __m256d wide = _mm256_cvtepi32_pd(_mm_cvtepu8_epi32(_mm_loadu_si32(levels)));
  return _mm256_cvttpd_epi32(wide * _mm256_load_pd(factors) + 0.5);
}

[[gnu::always_inline]] inline __m128i ScaledEight(const std::uint8_t* levels,
                                                  const double* factors) {
  return _mm_packs_epi32(ScaledFour(levels, factors), ScaledFour(levels + 4, factors + 4));
}

[[gnu::always_inline]] inline __m128i ScaledSixteen(const std::uint8_t* levels,
                                                    const double* factors) {
  return _mm_packus_epi16(ScaledEight(levels, factors), ScaledEight(levels + 8, factors + 8));
}

[[gnu::always_inline]] inline Vector Scaled(const Plane& levels, const double* factors) {
  return _mm256_set_m128i(ScaledSixteen(levels.at + 16, factors + 16),
                          ScaledSixteen(levels.at, factors));
}

}  // namespace

const LuminanceKernelTable& LuminanceKernelTable::Avx2() {
  return kLuminanceLoops;
}

}  // namespace kernels
