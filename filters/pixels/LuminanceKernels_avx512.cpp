// Luminance kernels for AVX-512 with byte permutes (VBMI).
#include "filters/pixels/ByteLookup_avx512.h"
#include "filters/pixels/simd/PixelBlocks_avx512.h"
// Behind the two that it is written for.
#include "filters/pixels/LuminanceLoops.h"

namespace kernels {
namespace {

// GCC 12 warns of its own unmasked forms of some of these; a full mask compiles to the same
// instruction.
constexpr __mmask8 kAll = 0xFF;

// The packs limit to 255.
[[gnu::always_inline]] inline __m256i ScaledEight(const std::uint8_t* levels,
                                                  const double* factors) {
  const __m128i eight = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(levels));
  const __m512d wide = _mm512_maskz_cvtepi32_pd(kAll, _mm256_cvtepu8_epi32(eight));
  return _mm512_maskz_cvttpd_epi32(kAll, wide * _mm512_load_pd(factors) + 0.5);
}

[[gnu::always_inline]] inline __m256i ScaledSixteen(const std::uint8_t* levels,
                                                    const double* factors) {
  return _mm256_packs_epi32(ScaledEight(levels, factors), ScaledEight(levels + 8, factors + 8));
}

[[gnu::always_inline]] inline __m256i ScaledThirtyTwo(const std::uint8_t* levels,
                                                      const double* factors) {
  return _mm256_packus_epi16(ScaledSixteen(levels, factors),
                             ScaledSixteen(levels + 16, factors + 16));
}

// The order in which the packed bytes come to stand.
constexpr Permutation kInOrder = [] {
  Permutation p = {};
  for (int i = 0; i < 64; ++i) {
    const int four = i / 4;  // of a lane of a pack
    p.from[i] = static_cast<std::uint8_t>((four / 8 * 8 + four % 2 * 4 + four / 2 % 4) * 4 + i % 4);
  }
  return p;
}();

[[gnu::always_inline]] inline Vector Scaled(const Plane& levels, const double* factors) {
  const __m512i packed =
      _mm512_mask_broadcast_i64x4(_mm512_castsi256_si512(ScaledThirtyTwo(levels.at, factors)), 0xF0,
                                  ScaledThirtyTwo(levels.at + 32, factors + 32));
  return _mm512_maskz_permutexvar_epi8(~__mmask64{0}, kInOrder, packed);
}

}  // namespace

const LuminanceKernelTable& LuminanceKernelTable::Avx512() {
  return kLuminanceLoops;
}

}  // namespace kernels
