// Frame kernels for AVX-512.
#include "filters/frames/FrameKernelLoops.h"

namespace kernels {

const FrameKernels& Avx512FrameKernels() {
  return kWideFrameKernels;
}

}  // namespace kernels
