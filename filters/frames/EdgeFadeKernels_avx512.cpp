// Fading masks for AVX-512.
#include "filters/frames/EdgeFadeLoops.h"

namespace kernels {

const EdgeFadeKernels& Avx512EdgeFadeKernels() {
  return kEdgeFadeLoops;
}

}  // namespace kernels
