#include "filters/pixels/PointKernelTable.h"

#include "filters/pixels/PointKernelLoops.h"

namespace kernels {
namespace {

void InvertPlain(std::uint8_t* bytes, std::size_t count, int percent, const ByteTable& table) {
  if (percent < 0 || percent > 100) return MapBytes(bytes, bytes, count, table);
  InvertLoop(bytes, count, percent);
}

}  // namespace

const PointKernelTable& PointKernelsFor(SimdLevel level) {
  static constexpr PointKernelTable kPlain = {
      Sepia, BlackWhite, ShiftColours, InvertPlain, FadeLoop, InvertMaskLoop, PutBackgroundLoop};
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
