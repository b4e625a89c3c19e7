// The mixer for AVX2.
#include "filters/colour/MixerKernelLoops.h"

namespace kernels {

const MixerKernels& MixerKernels::Avx2() {
  return kMixerLoops;
}

}  // namespace kernels
