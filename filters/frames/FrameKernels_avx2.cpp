// Frame kernels for AVX2.
#include "filters/frames/FrameKernelLoops.h"

namespace kernels {

const FrameKernels& Avx2FrameKernels() {
  return kWideFrameKernels;
}

}  // namespace kernels
