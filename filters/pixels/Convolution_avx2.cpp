// The 3 x 3 convolution for AVX2.
#include <immintrin.h>

#include "filters/pixels/ConvolutionBlocks.h"

namespace kernels {
namespace {

// Unpacking and packing work in the halves of a vector, and undo each other.
struct Avx2 {
  using Vector = __m256i;
  static constexpr std::ptrdiff_t kBytes = 32;

  static Vector Load(const std::uint8_t* at) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(at));
  }
  static void Store(std::uint8_t* at, Vector v) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(at), v);
  }
  static void StoreFront(std::uint8_t* at, Vector v, std::ptrdiff_t count) {
    std::uint8_t bytes[kBytes];
    Store(bytes, v);
    __builtin_memcpy(at, bytes, static_cast<std::size_t>(count));
  }
  static Vector Words(int value) { return _mm256_set1_epi16(static_cast<short>(value)); }
  static Vector Or(Vector a, Vector b) { return _mm256_or_si256(a, b); }
  static bool IsAny(Vector v) { return !_mm256_testz_si256(v, v); }
  static Vector Choose(Vector a, Vector b, Vector b255) { return _mm256_blendv_epi8(a, b, b255); }

  static Vector UnpackLow(Vector a, Vector b) { return _mm256_unpacklo_epi8(a, b); }
  static Vector UnpackHigh(Vector a, Vector b) { return _mm256_unpackhi_epi8(a, b); }
  static Vector Pack(Vector low, Vector high) { return _mm256_packus_epi16(low, high); }
  static Vector MultiplyPairs(Vector bytes, Vector weights) {
    return _mm256_maddubs_epi16(bytes, weights);
  }
  static Vector Add(Vector a, Vector b) { return _mm256_add_epi16(a, b); }
  static Vector Subtract(Vector a, Vector b) { return _mm256_sub_epi16(a, b); }
  static Vector Multiply(Vector a, Vector b) { return _mm256_mullo_epi16(a, b); }
  static Vector MultiplyHigh(Vector a, Vector b) { return _mm256_mulhi_epu16(a, b); }
  template <int kBits>
  static Vector ShiftLeft(Vector v) {
    return _mm256_slli_epi16(v, kBits);
  }
  static Vector AddOneWhereGreater(Vector v, Vector a, Vector b) {
    return _mm256_sub_epi16(v, _mm256_cmpgt_epi16(a, b));
  }

  static Vector Scale(Vector centre, Vector sum, double share, double allowance) {
    const auto half = [&](__m128i c, __m128i s) {
      const __m128i low = Quarter(c, s, share, allowance);
      const __m128i high = Quarter(_mm_srli_si128(c, 8), _mm_srli_si128(s, 8), share, allowance);
      return _mm_packs_epi32(low, high);
    };
    const __m128i low = half(_mm256_castsi256_si128(centre), _mm256_castsi256_si128(sum));
    const __m128i high =
        half(_mm256_extracti128_si256(centre, 1), _mm256_extracti128_si256(sum, 1));
    return _mm256_inserti128_si256(_mm256_castsi128_si256(low), high, 1);
  }

 private:
  // Four lower words to four whole numbers of 32 bits.
  static __m128i Quarter(__m128i centre, __m128i sum, double share, double allowance) {
    const auto reals = [](__m128i words) { return _mm256_cvtepi32_pd(_mm_cvtepi16_epi32(words)); };
    const __m256d change = _mm256_mul_pd(_mm256_set1_pd(share), reals(sum));
    const __m256d value =
        _mm256_add_pd(_mm256_add_pd(reals(centre), change), _mm256_set1_pd(allowance));
    const __m256d limited =
        _mm256_min_pd(_mm256_max_pd(value, _mm256_setzero_pd()), _mm256_set1_pd(255));
    return _mm256_cvttpd_epi32(limited);
  }
};

}  // namespace

const ConvolutionKernels& ConvolutionKernels::Avx2() {
  static constexpr ConvolutionKernels kTable = {ConvolveBlocks<kernels::Avx2>};
  return kTable;
}

}  // namespace kernels
