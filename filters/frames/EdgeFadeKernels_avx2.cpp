// Fading masks for AVX2.
#include "filters/frames/EdgeFadeLoops.h"

namespace kernels {

const EdgeFadeKernels& EdgeFadeKernels::Avx2() {
  return kEdgeFadeLoops;
}

}  // namespace kernels
