// Rows of pixels in vectors of eight doubles, for kernels that are exact in double.
//
// For files that are compiled for AVX-512 with byte permutes (VBMI), which get a copy of their own
// each.
#pragma once

#include <immintrin.h>

#include <cstdint>

#include "filters/pixels/simd/PixelBlocks_avx512.h"
#include "filters/pixels/simd/WideDoubles.h"

namespace kernels {
namespace {

// GCC 12 warns of its own unmasked forms of some of these; a full mask compiles to the same
// instruction.
struct EightDoubles {
  using Doubles = __m512d;
  static constexpr int kPixels = kernels::kPixels;
  static constexpr int kLanes = 8;
  static constexpr __mmask8 kAll = 0xFF;

  static Doubles Set(double value) { return _mm512_set1_pd(value); }
  static Doubles Max(Doubles value, double limit) {
    return _mm512_maskz_max_pd(kAll, value, Set(limit));
  }
  static Doubles Min(Doubles value, double limit) { return Min(value, Set(limit)); }
  static Doubles Min(Doubles a, Doubles b) { return _mm512_maskz_min_pd(kAll, a, b); }
  static Doubles MultiplyAdd(Doubles a, double b, Doubles c) {
    return _mm512_fmadd_pd(a, Set(b), c);
  }
  static Doubles Nearest(Doubles value) { return _mm512_maskz_roundscale_pd(kAll, value, 0); }
  static Doubles Distance(Doubles a, Doubles b) { return _mm512_abs_pd(a - b); }

  static Doubles Load(const std::uint8_t* bytes) {
    const __m128i eight = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(bytes));
    return _mm512_maskz_cvtepi32_pd(kAll, _mm256_cvtepu8_epi32(eight));
  }
  static void Store(std::uint8_t* bytes, Doubles values) {
    const __m256i whole = _mm512_maskz_cvttpd_epi32(kAll, values);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(bytes), _mm256_maskz_cvtepi32_epi8(kAll, whole));
  }

  // Changes a row block by block: change(blue, green, red) gets the planes of a block.
  template <class Wide, class Change>
  [[gnu::always_inline]] static void ChangePlanes(std::uint8_t* colour, int width,
                                                  const Change& change) {
    ChangeRow(
        colour, width, [&](const Block& block) __attribute__((always_inline)) {
          const Planes planes = Split(block);
          Plane<Wide> blue, green, red;
          _mm512_store_si512(blue.bytes, planes.blue);
          _mm512_store_si512(green.bytes, planes.green);
          _mm512_store_si512(red.bytes, planes.red);
          change(blue, green, red);
          return Join({_mm512_load_si512(blue.bytes), _mm512_load_si512(green.bytes),
                       _mm512_load_si512(red.bytes)});
        });
  }
};

}  // namespace
}  // namespace kernels
