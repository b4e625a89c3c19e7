// The loops of the Gaussian filters for AVX2.
#include "filters/detail/GaussKernelLoops.h"

namespace kernels {

const GaussKernelTable& Avx2GaussKernels() {
  return kGaussKernels;
}

}  // namespace kernels
