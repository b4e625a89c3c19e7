// YIQ kernels for AVX2: four pixels at a time.
#include "filters/colour/tone/YiqKernelLoops.h"
#include "filters/colour/tone/YiqKernels.h"
#include "filters/pixels/simd/WideDoubles_avx2.h"

namespace kernels {
namespace {

struct Four : FourDoubles {
  static void MapBytes(Plane<Four>& plane, const ByteTable& table) {
    ByteTableKernels::Avx2().mapBytes(plane.bytes, plane.bytes, sizeof plane.bytes, table);
  }
};

}  // namespace

const YiqKernels& YiqKernels::Avx2() {
  static constexpr YiqKernels kTable = {MapLuminanceLoop<Four>};
  return kTable;
}

}  // namespace kernels
