// The search for dust for AVX-512: nearly every neighbour of 64 bytes crosses a line of the cache,
// so that vectors of 32 bytes are faster there too.
#include "filters/detail/DustKernels.h"

namespace kernels {

const DustKernelTable& DustKernelTable::Avx512() {
  return Avx2();
}

}  // namespace kernels
