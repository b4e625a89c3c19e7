// HLS kernels for AVX-512.
#include "filters/pixels/HlsKernelLoops.h"

namespace kernels {

const HlsKernelTable& HlsKernelTable::Avx512() {
  return kHlsLoops;
}

}  // namespace kernels
