// HLS kernels for AVX2: four pixels at a time.
#include <immintrin.h>

#include "filters/pixels/HlsKernelLoops.h"
#include "filters/pixels/simd/WideDoubles_avx2.h"

namespace kernels {
namespace {

// Where the hues of four pixels stand in a table.
class Degrees {
 public:
  explicit Degrees(__m256d hues) {
    _mm_store_si128(reinterpret_cast<__m128i*>(at_), _mm256_cvttpd_epi32(hues));
  }
  int operator[](int i) const { return at_[i]; }

 private:
  alignas(16) int at_[4];
};

struct Four : FourDoubles {
  // By single loads, which are faster than gathers.
  static Doubles LookUp(const double* table, Doubles hue) {
    const Degrees at(hue);
    return _mm256_setr_pd(table[at[0]], table[at[1]], table[at[2]], table[at[3]]);
  }
  static HueChangeOf<Four> LookUp(const HueChange* table, Doubles hue) {
    const Degrees at(hue);
    const Doubles even = Pairs(table, &HueChange::shift, at, 0);
    const Doubles odd = Pairs(table, &HueChange::shift, at, 1);
    return {_mm256_unpacklo_pd(even, odd), _mm256_unpackhi_pd(even, odd),
            _mm256_unpacklo_pd(Pairs(table, &HueChange::lightness, at, 0),
                               Pairs(table, &HueChange::lightness, at, 1))};
  }

 private:
  // A member and the next one, of every second pixel.
  static Doubles Pairs(const HueChange* table, double HueChange::*member, const Degrees& at,
                       int first) {
    const auto pair = [&](int i) { return _mm_load_pd(&(table[at[first + 2 * i]].*member)); };
    return _mm256_insertf128_pd(_mm256_castpd128_pd256(pair(0)), pair(1), 1);
  }
};

}  // namespace

const HlsKernelTable& HlsKernelTable::Avx2() {
  return kHlsLoops<Four>;
}

}  // namespace kernels
