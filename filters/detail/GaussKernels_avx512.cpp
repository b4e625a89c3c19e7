// The loops of the Gaussian filters for AVX-512.
#include "filters/detail/GaussKernelLoops.h"

namespace kernels {

const GaussKernelTable& Avx512GaussKernels() {
  return kGaussKernels;
}

}  // namespace kernels
