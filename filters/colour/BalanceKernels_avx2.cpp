// Colour balance for AVX2: four pixels at a time.
//
// Calls no inline function of another header: one that the linker shares between files would carry
// wide instructions to processors that lack them.
#include <immintrin.h>

#include "filters/colour/BalanceKernelLoops.h"
#include "filters/pixels/simd/WideDoubles_avx2.h"

namespace kernels {
namespace {

struct Four : FourDoubles {
  static void StoreWhole(int* at, Doubles values) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(at), _mm256_cvttpd_epi32(values));
  }
  static Doubles Gather(const double* numbers) { return _mm256_loadu_pd(numbers); }
};

}  // namespace

const BalanceKernels& BalanceKernels::Avx2() {
  static constexpr BalanceKernels kTable = {BalanceLoop<Four>};
  return kTable;
}

}  // namespace kernels
