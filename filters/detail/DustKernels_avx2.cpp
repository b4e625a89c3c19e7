// The search for dust for AVX2.
#include <immintrin.h>

#include "filters/detail/DustLoops.h"

namespace kernels {
namespace {

struct Avx2 {
  using Vector = __m256i;
  static constexpr std::ptrdiff_t kPixels = 16;

  static Vector Load(const std::uint16_t* at) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(at));
  }
  static Vector Words(int value) { return _mm256_set1_epi16(static_cast<short>(value)); }
  static bool IsAny(Vector v) { return !_mm256_testz_si256(v, v); }
  static Vector Distance(Vector a, Vector b) { return _mm256_abs_epi16(_mm256_sub_epi16(a, b)); }
  static Vector AddOneWhereLess(Vector v, Vector a, Vector b) {
    return _mm256_sub_epi16(v, _mm256_cmpgt_epi16(b, a));
  }
  static Vector NotGreater(Vector a, Vector b) {
    return _mm256_xor_si256(_mm256_cmpgt_epi16(a, b), Words(-1));
  }
  static void StoreMarks(std::uint8_t* at, Vector words) {
    const __m128i bytes =
        _mm_packs_epi16(_mm256_castsi256_si128(words), _mm256_extracti128_si256(words, 1));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(at), bytes);
  }
};

}  // namespace

const DustKernelTable& DustKernelTable::Avx2() {
  static constexpr DustKernelTable kTable = {AddChannelsLoop, FindDustInBlocks<kernels::Avx2>};
  return kTable;
}

}  // namespace kernels
