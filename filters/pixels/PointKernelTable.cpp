#include "filters/pixels/PointKernelTable.h"

#include "filters/pixels/PointKernelLoops.h"

namespace kernels {
namespace {

void InvertPlain(std::uint8_t* bytes, std::size_t count, int percent, const ByteTable& table) {
  if (percent < 0 || percent > 100) return MapBytes(bytes, bytes, count, table);
  InvertLoop(bytes, count, percent);
}

}  // namespace

const PointKernelTable& PointKernelTable::Plain() {
  static constexpr PointKernelTable kPlain = {
      Sepia, BlackWhite, ShiftColours, InvertPlain, FadeLoop, InvertMaskLoop, PutBackgroundLoop};
  return kPlain;
}

}  // namespace kernels
