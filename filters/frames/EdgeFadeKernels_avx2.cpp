// Fading masks for AVX2.
#include "filters/frames/EdgeFadeVectorLoops.h"

namespace kernels {

const EdgeFadeKernels& EdgeFadeKernels::Avx2() {
  return kEdgeFadeLoops;
}

}  // namespace kernels
