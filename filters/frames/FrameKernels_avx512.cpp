// Frame kernels for AVX-512.
#include "filters/frames/FrameVectorLoops.h"

namespace kernels {

const FrameKernels& FrameKernels::Avx512() {
  return kFrameVectorLoops;
}

}  // namespace kernels
