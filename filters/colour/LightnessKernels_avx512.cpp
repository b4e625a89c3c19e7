// Drawing by lightness for AVX-512.
#include "filters/colour/LightnessKernelLoops.h"

namespace kernels {

const LightnessKernels& LightnessKernels::Avx512() {
  return kLightnessLoops;
}

}  // namespace kernels
