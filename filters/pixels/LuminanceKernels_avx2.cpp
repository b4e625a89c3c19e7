// Luminance kernels for AVX2.
#include "filters/pixels/LuminanceLoops.h"

namespace kernels {

const LuminanceKernelTable& LuminanceKernelTable::Avx2() {
  return kLuminanceLoops;
}

}  // namespace kernels
