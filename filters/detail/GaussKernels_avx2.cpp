// The loops of the Gaussian filters for AVX2.
#include "filters/detail/GaussKernelLoops.h"

namespace kernels {

const GaussKernelTable& GaussKernelTable::Avx2() {
  return kGaussKernels;
}

}  // namespace kernels
