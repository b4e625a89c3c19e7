// The 3 x 3 convolution for AVX-512.
#include "filters/pixels/ConvolutionLoops.h"

namespace kernels {

const ConvolutionKernels& ConvolutionKernels::Avx512() {
  return kConvolutionLoops;
}

}  // namespace kernels
