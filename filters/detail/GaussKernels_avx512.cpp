// The loops of the Gaussian filters for AVX-512.
#include "filters/detail/GaussVectorLoops.h"

namespace kernels {

const GaussKernelTable& GaussKernelTable::Avx512() {
  return kGaussVectorKernels;
}

}  // namespace kernels
