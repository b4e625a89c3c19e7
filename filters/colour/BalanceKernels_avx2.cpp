// The colour balance for AVX2.
#include "filters/colour/BalanceKernelLoops.h"

namespace kernels {

const BalanceKernels& BalanceKernels::Avx2() {
  return kBalanceLoops;
}

}  // namespace kernels
