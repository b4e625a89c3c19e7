// Fading masks for AVX2.
#include "filters/frames/EdgeFadeLoops.h"

namespace kernels {

const EdgeFadeKernels& Avx2EdgeFadeKernels() {
  return kEdgeFadeLoops;
}

}  // namespace kernels
