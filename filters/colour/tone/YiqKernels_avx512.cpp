// YIQ kernels for AVX-512 with byte permutes (VBMI): eight pixels at a time.
#include "filters/colour/tone/YiqKernelLoops.h"
#include "filters/colour/tone/YiqKernels.h"
#include "filters/pixels/simd/WideDoubles_avx512.h"

namespace kernels {
namespace {

struct Eight : EightDoubles {
  static void MapBytes(Plane<Eight>& plane, const ByteTable& table) {
    ByteTableKernels::Avx512().mapBytes(plane.bytes, plane.bytes, sizeof plane.bytes, table);
  }
};

}  // namespace

const YiqKernels& YiqKernels::Avx512() {
  static constexpr YiqKernels kTable = {MapLuminanceLoop<Eight>};
  return kTable;
}

}  // namespace kernels
