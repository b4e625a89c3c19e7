// Drawing by lightness for AVX2.
#include "filters/colour/LightnessKernelLoops.h"

namespace kernels {

const LightnessKernels& LightnessKernels::Avx2() {
  return kLightnessLoops;
}

}  // namespace kernels
