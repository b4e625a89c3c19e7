// The loops of the Gaussian filters for AVX2.
#include "filters/detail/GaussVectorLoops.h"

namespace kernels {

const GaussKernelTable& GaussKernelTable::Avx2() {
  return kGaussVectorKernels;
}

}  // namespace kernels
