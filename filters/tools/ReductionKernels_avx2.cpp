// Reduction kernels for AVX2.
//
// Calls no inline function of another header: one that the linker shares between files would carry
// wide instructions to processors that lack them.
#include "filters/tools/ReductionKernelLoops.h"

namespace kernels {

const ReductionKernels& Avx2ReductionKernels() {
  static constexpr ReductionKernels kTable = {SumColoursLoop, SumMaskedLoop, SharpenLoop,
                                              SharpenMaskedLoop};
  return kTable;
}

}  // namespace kernels
