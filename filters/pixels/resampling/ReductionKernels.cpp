#include "filters/pixels/resampling/ReductionKernels.h"

#include "filters/pixels/resampling/ReductionKernelLoops.h"

namespace kernels {

const ReductionKernels& ReductionKernelsFor(SimdLevel level) {
  static constexpr ReductionKernels kPlain = {SumColoursLoop, SumMaskedLoop, DivideLoop,
                                              SharpenLoop, SharpenMaskedLoop};
#if defined(__x86_64__)
  if (level == SimdLevel::Avx512) return Avx512ReductionKernels();
  if (level == SimdLevel::Avx2) return Avx2ReductionKernels();
#else
  static_cast<void>(level);
#endif
  return kPlain;
}

const ReductionKernels& ActiveReductionKernels() {
  static const ReductionKernels& kernels = ReductionKernelsFor(ActiveSimdLevel());
  return kernels;
}

}  // namespace kernels
