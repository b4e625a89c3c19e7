// Mixer kernel for AVX-512 with byte permutes (VBMI).
//
// Calls no inline function of another header: one that the linker shares between files would carry
// wide instructions to processors that lack them.
#include "filters/colour/MixerKernelLoops.h"
#include "filters/pixels/simd/WideDoubles_avx512.h"

namespace kernels {

const MixerKernels& MixerKernels::Avx512() {
  static constexpr MixerKernels kTable = {MixLoop<EightDoubles>};
  return kTable;
}

}  // namespace kernels
