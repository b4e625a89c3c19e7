// YIQ kernels for AVX2: four pixels at a time.
//
// Calls no inline function of another header: one that the linker shares between files would carry
// wide instructions to processors that lack them.
#include "filters/tools/WideDoubles_avx2.h"
#include "filters/tools/YiqKernelLoops.h"
#include "filters/tools/YiqKernels.h"

namespace kernels {
namespace {

void MapLuminanceAvx2(std::uint8_t* colour, int width, const ByteTable& table) {
  using Bytes = Plane<FourDoubles>;
  const auto mapBytes = [&, map = Avx2ByteTableKernels().mapBytes](auto& bytes) {
    map(bytes, bytes, sizeof bytes, table);
  };
  ChangePlanes<FourDoubles>(
      colour, width, [&](Bytes & blue, Bytes & green, Bytes & red) __attribute__((always_inline)) {
        MapLuminanceOfBlock(blue, green, red, mapBytes);
      });
}

}  // namespace

YiqKernel Avx2YiqKernel() {
  return MapLuminanceAvx2;
}

}  // namespace kernels
