#include "filters/pixels/resampling/BicubicKernels.h"

#include "filters/pixels/resampling/BicubicKernelLoops.h"

namespace kernels {

const BicubicKernels& BicubicKernelsFor(SimdLevel level) {
  static constexpr BicubicKernels kPlain = {StretchLoop, BlendLoop, WeighLoop, StretchMaskedLoop,
                                            BlendMaskedLoop};
#if defined(__x86_64__)
  if (level == SimdLevel::Avx512) return Avx512BicubicKernels();
  if (level == SimdLevel::Avx2) return Avx2BicubicKernels();
#else
  static_cast<void>(level);
#endif
  return kPlain;
}

const BicubicKernels& ActiveBicubicKernels() {
  static const BicubicKernels& kernels = BicubicKernelsFor(ActiveSimdLevel());
  return kernels;
}

}  // namespace kernels
