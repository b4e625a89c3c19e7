// The loops of the Gaussian filters for AVX-512.
#include "filters/detail/GaussKernelLoops.h"

namespace kernels {

const GaussKernelTable& GaussKernelTable::Avx512() {
  return kGaussKernels;
}

}  // namespace kernels
