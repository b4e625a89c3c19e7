// YIQ kernels for AVX2.
#include "filters/colour/tone/YiqKernelLoops.h"

namespace kernels {

const YiqKernels& YiqKernels::Avx2() {
  static constexpr YiqKernels kTable = {MapLuminanceLoop};
  return kTable;
}

}  // namespace kernels
