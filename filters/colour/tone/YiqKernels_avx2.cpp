// YIQ kernels for AVX2: four pixels at a time.
//
// Calls no inline function of another header: one that the linker shares between files would carry
// wide instructions to processors that lack them.
#include "filters/colour/tone/YiqKernelLoops.h"
#include "filters/colour/tone/YiqKernels.h"
#include "filters/pixels/simd/WideDoubles_avx2.h"

namespace kernels {
namespace {

struct Four : FourDoubles {
  static void MapBytes(Plane<Four>& plane, const ByteTable& table) {
    Avx2ByteTableKernels().mapBytes(plane.bytes, plane.bytes, sizeof plane.bytes, table);
  }
};

}  // namespace

YiqKernel Avx2YiqKernel() {
  return MapLuminanceLoop<Four>;
}

}  // namespace kernels
