#include "filters/pixels/ByteTableKernels.h"

namespace kernels {

void MapBytes(std::uint8_t* to, const std::uint8_t* from, std::size_t count,
              const ByteTable& table) {
  for (std::size_t i = 0; i < count; ++i) to[i] = table[from[i]];
}

void MapChannels(std::uint8_t* to, const std::uint8_t* from, int width,
                 const ChannelTables& tables) {
  for (int x = 0; x < width; ++x, to += 3, from += 3) {
    to[0] = tables.blue[from[0]];
    to[1] = tables.green[from[1]];
    to[2] = tables.red[from[2]];
  }
}

const ByteTableKernels& ByteTableKernelsFor(SimdLevel level) {
  static constexpr ByteTableKernels kPlain = {MapBytes, MapChannels};
#if defined(__x86_64__)
  if (level == SimdLevel::Avx512) return Avx512ByteTableKernels();
  if (level == SimdLevel::Avx2) return Avx2ByteTableKernels();
#else
  static_cast<void>(level);
#endif
  return kPlain;
}

const ByteTableKernels& ActiveByteTableKernels() {
  static const ByteTableKernels& kernels = ByteTableKernelsFor(ActiveSimdLevel());
  return kernels;
}

}  // namespace kernels
