// The mixer for AVX-512.
#include "filters/colour/MixerKernelLoops.h"

namespace kernels {

const MixerKernels& MixerKernels::Avx512() {
  return kMixerLoops;
}

}  // namespace kernels
