// The search for dust for AVX2.
#include "filters/detail/DustLoops.h"

namespace kernels {

const DustKernelTable& DustKernelTable::Avx2() {
  static constexpr DustKernelTable kTable = {AddChannelsInBlocks, FindDustInBlocks};
  return kTable;
}

}  // namespace kernels
