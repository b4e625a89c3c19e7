#include "filters/pixels/resampling/ReductionKernels.h"

#include "filters/pixels/resampling/ReductionKernelLoops.h"

namespace kernels {

const ReductionKernels& ReductionKernels::Plain() {
  static constexpr ReductionKernels kPlain = {SumColoursLoop, SumMaskedLoop, DivideLoop,
                                              SharpenLoop, SharpenMaskedLoop};
  return kPlain;
}

}  // namespace kernels
