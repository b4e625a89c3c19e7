// The colour balance for AVX-512.
#include "filters/colour/BalanceKernelLoops.h"

namespace kernels {

const BalanceKernels& BalanceKernels::Avx512() {
  return kBalanceLoops;
}

}  // namespace kernels
