// Bicubic kernels for AVX-512.
//
// Calls no inline function of another header: one that the linker shares between files would carry
// wide instructions to processors that lack them.
#include "filters/tools/BicubicKernelLoops.h"

namespace kernels {

const BicubicKernels& Avx512BicubicKernels() {
  static constexpr BicubicKernels kTable = {StretchLoop, BlendLoop, WeighLoop, StretchMaskedLoop,
                                            BlendMaskedLoop};
  return kTable;
}

}  // namespace kernels
