// YIQ kernels for AVX-512.
#include "filters/colour/tone/YiqKernelLoops.h"

namespace kernels {

const YiqKernels& YiqKernels::Avx512() {
  static constexpr YiqKernels kTable = {MapLuminanceLoop};
  return kTable;
}

}  // namespace kernels
