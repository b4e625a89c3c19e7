// Mixer kernel for AVX2.
//
// Calls no inline function of another header: one that the linker shares between files would carry
// wide instructions to processors that lack them.
#include "filters/colour/MixerKernelLoops.h"
#include "filters/pixels/simd/WideDoubles_avx2.h"

namespace kernels {

const MixerKernels& MixerKernels::Avx2() {
  static constexpr MixerKernels kTable = {MixLoop<FourDoubles>};
  return kTable;
}

}  // namespace kernels
