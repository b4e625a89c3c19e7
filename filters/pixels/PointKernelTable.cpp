#include "filters/pixels/PointKernelTable.h"

#include "filters/pixels/PointKernelLoops.h"

namespace kernels {

const PointKernelTable& PointKernelTable::Plain() {
  static constexpr PointKernelTable kPlain = {
      Sepia, BlackWhite, ShiftColours, InvertLoop, FadeLoop, InvertMaskLoop, PutBackgroundLoop};
  return kPlain;
}

}  // namespace kernels
