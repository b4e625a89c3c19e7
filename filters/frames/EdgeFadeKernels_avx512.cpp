// Fading masks for AVX-512.
#include "filters/frames/EdgeFadeVectorLoops.h"

namespace kernels {

const EdgeFadeKernels& EdgeFadeKernels::Avx512() {
  return kEdgeFadeLoops;
}

}  // namespace kernels
