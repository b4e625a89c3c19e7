#include "filters/detail/GaussKernels.h"

#include "filters/detail/GaussKernelLoops.h"

namespace kernels {

const GaussKernelTable& GaussKernelsFor(SimdLevel level) {
#if defined(__x86_64__)
  if (level == SimdLevel::Avx512) return Avx512GaussKernels();
  if (level == SimdLevel::Avx2) return Avx2GaussKernels();
#else
  static_cast<void>(level);
#endif
  return kGaussKernels;
}

}  // namespace kernels
