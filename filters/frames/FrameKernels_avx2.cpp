// Frame kernels for AVX2.
#include "filters/frames/FrameVectorLoops.h"

namespace kernels {

const FrameKernels& FrameKernels::Avx2() {
  return kFrameVectorLoops;
}

}  // namespace kernels
