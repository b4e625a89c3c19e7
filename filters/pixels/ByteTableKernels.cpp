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

const ByteTableKernels& ByteTableKernels::Plain() {
  static constexpr ByteTableKernels kPlain = {MapBytes, MapChannels};
  return kPlain;
}

}  // namespace kernels
