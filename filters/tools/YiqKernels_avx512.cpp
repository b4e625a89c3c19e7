// YIQ kernels for AVX-512 with byte permutes (VBMI): eight pixels at a time.
//
// Calls no inline function of another header: one that the linker shares between files would carry
// wide instructions to processors that lack them.
#include "filters/tools/WideDoubles_avx512.h"
#include "filters/tools/YiqKernelLoops.h"
#include "filters/tools/YiqKernels.h"

namespace kernels {
namespace {

void MapLuminanceAvx512(std::uint8_t* colour, int width, const ByteTable& table) {
  using Bytes = Plane<EightDoubles>;
  const auto mapBytes = [&, map = Avx512ByteTableKernels().mapBytes](auto& bytes) {
    map(bytes, bytes, sizeof bytes, table);
  };
  ChangePlanes<EightDoubles>(
      colour, width, [&](Bytes & blue, Bytes & green, Bytes & red) __attribute__((always_inline)) {
        MapLuminanceOfBlock(blue, green, red, mapBytes);
      });
}

}  // namespace

YiqKernel Avx512YiqKernel() {
  return MapLuminanceAvx512;
}

}  // namespace kernels
