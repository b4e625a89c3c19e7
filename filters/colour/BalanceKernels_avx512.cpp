// Colour balance for AVX-512 with byte permutes (VBMI): eight pixels at a time.
//
// Calls no inline function of another header: one that the linker shares between files would carry
// wide instructions to processors that lack them.
#include <immintrin.h>

#include "filters/colour/BalanceKernelLoops.h"
#include "filters/pixels/simd/WideDoubles_avx512.h"

namespace kernels {
namespace {

struct Eight : EightDoubles {
  static void StoreWhole(int* at, Doubles values) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(at), _mm512_maskz_cvttpd_epi32(0xFF, values));
  }
  static Doubles Gather(const double* numbers) { return _mm512_loadu_pd(numbers); }
};

}  // namespace

const BalanceKernels& BalanceKernels::Avx512() {
  static constexpr BalanceKernels kTable = {BalanceLoop<Eight>};
  return kTable;
}

}  // namespace kernels
