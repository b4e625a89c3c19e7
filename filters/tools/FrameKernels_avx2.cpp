// Frame kernels for AVX2.
#include "filters/tools/FrameKernelLoops.h"

namespace kernels {

const FrameKernels& Avx2FrameKernels() {
  return kWideFrameKernels;
}

}  // namespace kernels
