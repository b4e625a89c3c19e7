// Frame kernels for AVX2.
#include "filters/frames/FrameKernelLoops.h"

namespace kernels {

const FrameKernels& FrameKernels::Avx2() {
  return kWideFrameKernels;
}

}  // namespace kernels
