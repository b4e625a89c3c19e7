// YIQ kernels for AVX-512 with byte permutes (VBMI): eight pixels at a time.
//
// Calls no inline function of another header: one that the linker shares between files would carry
// wide instructions to processors that lack them.
#include "filters/colour/tone/YiqKernelLoops.h"
#include "filters/colour/tone/YiqKernels.h"
#include "filters/pixels/simd/WideDoubles_avx512.h"

namespace kernels {
namespace {

struct Eight : EightDoubles {
  static void MapBytes(Plane<Eight>& plane, const ByteTable& table) {
    Avx512ByteTableKernels().mapBytes(plane.bytes, plane.bytes, sizeof plane.bytes, table);
  }
};

}  // namespace

YiqKernel Avx512YiqKernel() {
  return MapLuminanceLoop<Eight>;
}

}  // namespace kernels
