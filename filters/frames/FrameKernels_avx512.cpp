// Frame kernels for AVX-512.
#include "filters/frames/FrameKernelLoops.h"

namespace kernels {

const FrameKernels& FrameKernels::Avx512() {
  return kWideFrameKernels;
}

}  // namespace kernels
