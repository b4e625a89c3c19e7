#include "filters/pixels/resampling/BicubicKernels.h"

#include "filters/pixels/resampling/BicubicKernelLoops.h"

namespace kernels {

const BicubicKernels& BicubicKernels::Plain() {
  static constexpr BicubicKernels kPlain = {StretchLoop, BlendLoop, WeighLoop, StretchMaskedLoop,
                                            BlendMaskedLoop};
  return kPlain;
}

}  // namespace kernels
