#include "filters/tools/PointKernelTable.h"

namespace kernels {

const PointKernelTable& PointKernelsFor(SimdLevel level) {
  static constexpr PointKernelTable kPlain = {Sepia, MapBytes, BlackWhite, ShiftColours};
#if defined(__x86_64__)
  if (level == SimdLevel::Avx512) return Avx512PointKernels();
  if (level == SimdLevel::Avx2) return Avx2PointKernels();
#else
  static_cast<void>(level);
#endif
  return kPlain;
}

const PointKernelTable& ActivePointKernels() {
  static const PointKernelTable& kernels = PointKernelsFor(ActiveSimdLevel());
  return kernels;
}

}  // namespace kernels
