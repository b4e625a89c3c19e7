// The 3 x 3 convolution for AVX-512.
#include <immintrin.h>

#include "filters/pixels/ConvolutionBlocks.h"

namespace kernels {
namespace {

// Unpacking and packing work in the quarters of a vector, and undo each other.
struct Avx512 {
  using Vector = __m512i;
  static constexpr std::ptrdiff_t kBytes = 64;

  static Vector Load(const std::uint8_t* at) { return _mm512_loadu_si512(at); }
  static void Store(std::uint8_t* at, Vector v) { _mm512_storeu_si512(at, v); }
  static void StoreFront(std::uint8_t* at, Vector v, std::ptrdiff_t count) {
    _mm512_mask_storeu_epi8(at, (__mmask64{1} << count) - 1, v);
  }
  static Vector Words(int value) { return _mm512_set1_epi16(static_cast<short>(value)); }
  static Vector Or(Vector a, Vector b) { return _mm512_or_si512(a, b); }
  static bool IsAny(Vector v) { return _mm512_test_epi8_mask(v, v) != 0; }
  static Vector Choose(Vector a, Vector b, Vector b255) {
    return _mm512_mask_mov_epi8(a, _mm512_movepi8_mask(b255), b);
  }

  static Vector UnpackLow(Vector a, Vector b) { return _mm512_unpacklo_epi8(a, b); }
  static Vector UnpackHigh(Vector a, Vector b) { return _mm512_unpackhi_epi8(a, b); }
  static Vector Pack(Vector low, Vector high) { return _mm512_packus_epi16(low, high); }
  static Vector MultiplyPairs(Vector bytes, Vector weights) {
    return _mm512_maddubs_epi16(bytes, weights);
  }
  static Vector Add(Vector a, Vector b) { return _mm512_add_epi16(a, b); }
  static Vector Subtract(Vector a, Vector b) { return _mm512_sub_epi16(a, b); }
  static Vector Multiply(Vector a, Vector b) { return _mm512_mullo_epi16(a, b); }
  static Vector MultiplyHigh(Vector a, Vector b) { return _mm512_mulhi_epu16(a, b); }
  template <int kBits>
  static Vector ShiftLeft(Vector v) {
    return _mm512_slli_epi16(v, kBits);
  }
  static Vector AddOneWhereGreater(Vector v, Vector a, Vector b) {
    return _mm512_mask_sub_epi16(v, _mm512_cmpgt_epi16_mask(a, b), v, Words(-1));
  }

  static Vector Scale(Vector centre, Vector sum, double share, double allowance) {
    const auto quarter = [&](__m128i c, __m128i s) { return Quarter(c, s, share, allowance); };
    const __m256i low =
        Join(quarter(Part<0>(centre), Part<0>(sum)), quarter(Part<1>(centre), Part<1>(sum)));
    const __m256i high =
        Join(quarter(Part<2>(centre), Part<2>(sum)), quarter(Part<3>(centre), Part<3>(sum)));
    return _mm512_maskz_inserti64x4(kAll, _mm512_castsi256_si512(low), high, 1);
  }

 private:
  // GCC 12 warns of its own unmasked forms of some of these; a full mask compiles to the same.
  static constexpr __mmask8 kAll = 255;

  template <int kNumber>
  static __m128i Part(Vector v) {
    return _mm512_maskz_extracti32x4_epi32(kAll, v, kNumber);
  }
  static __m256i Join(__m128i low, __m128i high) {
    return _mm256_inserti128_si256(_mm256_castsi128_si256(low), high, 1);
  }
  static __m512d Reals(__m128i words) {
    return _mm512_maskz_cvtepi32_pd(kAll, _mm256_cvtepi16_epi32(words));
  }
  // Eight words to eight bytes, still as words.
  static __m128i Quarter(__m128i centre, __m128i sum, double share, double allowance) {
    const __m512d change = _mm512_mul_pd(_mm512_set1_pd(share), Reals(sum));
    const __m512d value =
        _mm512_add_pd(_mm512_add_pd(Reals(centre), change), _mm512_set1_pd(allowance));
    const __m512d limited = _mm512_maskz_min_pd(
        kAll, _mm512_maskz_max_pd(kAll, value, _mm512_setzero_pd()), _mm512_set1_pd(255));
    return _mm256_maskz_cvtepi32_epi16(kAll, _mm512_maskz_cvttpd_epi32(kAll, limited));
  }
};

}  // namespace

const ConvolutionKernels& ConvolutionKernels::Avx512() {
  static constexpr ConvolutionKernels kTable = {ConvolveBlocks<kernels::Avx512>};
  return kTable;
}

}  // namespace kernels
