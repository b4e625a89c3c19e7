// HLS kernels for AVX-512 with byte permutes (VBMI): eight pixels at a time.
#include <immintrin.h>

#include "filters/pixels/HlsKernelLoops.h"
#include "filters/pixels/simd/WideDoubles_avx512.h"

namespace kernels {
namespace {

// Where the hues of eight pixels stand in a table.
class Degrees {
 public:
  explicit Degrees(__m512d hues) {
    _mm256_store_si256(reinterpret_cast<__m256i*>(at_), _mm512_maskz_cvttpd_epi32(0xFF, hues));
  }
  int operator[](int i) const { return at_[i]; }

 private:
  alignas(32) int at_[8];
};

struct Eight : EightDoubles {
  // By single loads, which are faster than gathers.
  static Doubles LookUp(const double* table, Doubles hue) {
    const Degrees at(hue);
    return _mm512_setr_pd(table[at[0]], table[at[1]], table[at[2]], table[at[3]], table[at[4]],
                          table[at[5]], table[at[6]], table[at[7]]);
  }
  static HueChangeOf<Eight> LookUp(const HueChange* table, Doubles hue) {
    const Degrees at(hue);
    const Doubles even = Pairs(table, &HueChange::shift, at, 0);
    const Doubles odd = Pairs(table, &HueChange::shift, at, 1);
    return {_mm512_maskz_unpacklo_pd(kAll, even, odd), _mm512_maskz_unpackhi_pd(kAll, even, odd),
            _mm512_maskz_unpacklo_pd(kAll, Pairs(table, &HueChange::lightness, at, 0),
                                     Pairs(table, &HueChange::lightness, at, 1))};
  }

 private:
  // A member and the next one, of every second pixel.
  static Doubles Pairs(const HueChange* table, double HueChange::*member, const Degrees& at,
                       int first) {
    const auto pair = [&](int i) { return _mm_load_pd(&(table[at[first + 2 * i]].*member)); };
    Doubles pairs = _mm512_castpd128_pd512(pair(0));
    pairs = _mm512_mask_broadcast_f64x2(pairs, 0x0C, pair(1));
    pairs = _mm512_mask_broadcast_f64x2(pairs, 0x30, pair(2));
    return _mm512_mask_broadcast_f64x2(pairs, 0xC0, pair(3));
  }
};

}  // namespace

const HlsKernelTable& HlsKernelTable::Avx512() {
  return kHlsLoops<Eight>;
}

}  // namespace kernels
