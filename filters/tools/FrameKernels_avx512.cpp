// Frame kernels for AVX-512.
#include "filters/tools/FrameKernelLoops.h"

namespace kernels {

const FrameKernels& Avx512FrameKernels() {
  return kWideFrameKernels;
}

}  // namespace kernels
