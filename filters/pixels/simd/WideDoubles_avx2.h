// Rows of pixels in vectors of four doubles, for kernels that are exact in double.
//
// For files that are compiled for AVX2, which get a copy of their own each.
#pragma once

#include <immintrin.h>

#include <cstdint>

#include "filters/pixels/simd/PixelBlocks_avx2.h"
#include "filters/pixels/simd/WideDoubles.h"

namespace kernels {
namespace {

struct FourDoubles {
  using Doubles = __m256d;
  static constexpr int kPixels = kernels::kPixels;
  static constexpr int kLanes = 4;

  static Doubles Set(double value) { return _mm256_set1_pd(value); }
  static Doubles Max(Doubles value, double limit) { return _mm256_max_pd(value, Set(limit)); }
  static Doubles Min(Doubles value, double limit) { return Min(value, Set(limit)); }
  static Doubles Min(Doubles a, Doubles b) { return _mm256_min_pd(a, b); }
  static Doubles MultiplyAdd(Doubles a, double b, Doubles c) {
    return _mm256_fmadd_pd(a, Set(b), c);
  }
  static Doubles Nearest(Doubles value) {
    return _mm256_round_pd(value, _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC);
  }
  static Doubles Distance(Doubles a, Doubles b) { return _mm256_andnot_pd(Set(-0.0), a - b); }

  static Doubles Load(const std::uint8_t* bytes) {
    return _mm256_cvtepi32_pd(_mm_cvtepu8_epi32(_mm_loadu_si32(bytes)));
  }
  static void Store(std::uint8_t* bytes, Doubles values) {
    const __m128i lowBytes = _mm_set1_epi32(0x0C080400);
    _mm_storeu_si32(bytes, _mm_shuffle_epi8(_mm256_cvttpd_epi32(values), lowBytes));
  }

  // Changes a row block by block: change(blue, green, red) gets the planes of a block.
  template <class Wide, class Change>
  [[gnu::always_inline]] static void ChangePlanes(std::uint8_t* colour, int width,
                                                  const Change& change) {
    ChangeRow(
        colour, width, [&](const Block& block) __attribute__((always_inline)) {
          const Planes planes = Split(block);
          Plane<Wide> blue, green, red;
          kernels::Store(blue.bytes, planes.blue);
          kernels::Store(green.bytes, planes.green);
          kernels::Store(red.bytes, planes.red);
          change(blue, green, red);
          return Join(
              {kernels::Load(blue.bytes), kernels::Load(green.bytes), kernels::Load(red.bytes)});
        });
  }
};

}  // namespace
}  // namespace kernels
