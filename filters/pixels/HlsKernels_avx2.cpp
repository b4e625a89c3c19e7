// HLS kernels for AVX2.
#include "filters/pixels/HlsKernelLoops.h"

namespace kernels {

const HlsKernelTable& HlsKernelTable::Avx2() {
  return kHlsLoops;
}

}  // namespace kernels
