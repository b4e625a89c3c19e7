// The 3 x 3 convolution for AVX2.
#include "filters/pixels/ConvolutionLoops.h"

namespace kernels {

const ConvolutionKernels& ConvolutionKernels::Avx2() {
  return kConvolutionLoops;
}

}  // namespace kernels
