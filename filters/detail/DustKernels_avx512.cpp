// The search for dust for AVX-512.
#include "filters/detail/DustLoops.h"

namespace kernels {

const DustKernelTable& DustKernelTable::Avx512() {
  static constexpr DustKernelTable kTable = {AddChannelsInBlocks, FindDustInBlocks};
  return kTable;
}

}  // namespace kernels
