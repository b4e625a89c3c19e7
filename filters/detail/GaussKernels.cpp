#include "filters/detail/GaussKernels.h"

#include "filters/detail/GaussKernelLoops.h"

namespace kernels {

const GaussKernelTable& GaussKernelTable::Plain() {
  return kGaussKernels;
}

}  // namespace kernels
