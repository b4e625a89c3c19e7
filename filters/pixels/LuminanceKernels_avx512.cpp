// Luminance kernels for AVX-512.
#include "filters/pixels/LuminanceLoops.h"

namespace kernels {

const LuminanceKernelTable& LuminanceKernelTable::Avx512() {
  return kLuminanceLoops;
}

}  // namespace kernels
