// The search for dust for AVX-512.
#include <immintrin.h>

#include "filters/detail/DustLoops.h"

namespace kernels {
namespace {

struct Avx512 {
  using Vector = __m512i;
  static constexpr std::ptrdiff_t kPixels = 32;

  static Vector Load(const std::uint16_t* at) { return _mm512_loadu_si512(at); }
  static Vector Words(int value) { return _mm512_set1_epi16(static_cast<short>(value)); }
  static bool IsAny(Vector v) { return _mm512_test_epi16_mask(v, v) != 0; }
  static Vector Distance(Vector a, Vector b) { return _mm512_abs_epi16(_mm512_sub_epi16(a, b)); }
  static Vector AddOneWhereLess(Vector v, Vector a, Vector b) {
    return _mm512_mask_sub_epi16(v, _mm512_cmplt_epi16_mask(a, b), v, Words(-1));
  }
  static Vector NotGreater(Vector a, Vector b) {
    return _mm512_movm_epi16(_mm512_cmple_epi16_mask(a, b));
  }
  static void StoreMarks(std::uint8_t* at, Vector words) {
    // GCC 12 warns of its own unmasked form; a full mask compiles to the same instruction.
    const __m256i bytes = _mm512_maskz_cvtepi16_epi8(~__mmask32{0}, words);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(at), bytes);
  }
};

}  // namespace

const DustKernelTable& DustKernelTable::Avx512() {
  static constexpr DustKernelTable kTable = {AddChannelsLoop, FindDustInBlocks<kernels::Avx512>};
  return kTable;
}

}  // namespace kernels
