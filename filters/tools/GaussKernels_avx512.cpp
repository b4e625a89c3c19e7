// The loops of the Gaussian filters for AVX-512.
#include "filters/tools/GaussKernelLoops.h"

namespace kernels {

const GaussKernelTable& Avx512GaussKernels() {
  return kGaussKernels;
}

}  // namespace kernels
