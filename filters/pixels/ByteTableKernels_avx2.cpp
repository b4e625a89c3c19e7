// Byte tables for AVX2.
#include "filters/pixels/ByteTableKernels.h"
#include "filters/pixels/simd/PixelBlocks.h"

namespace kernels {
namespace {

void MapBytesAvx2(std::uint8_t* to, const std::uint8_t* from, std::size_t count,
                  const ByteTable& table) {
  const ByteLookup map(table);
  for (; count >= 32; count -= 32, to += 32, from += 32) Store(to, map(Load<Bytes>(from)));
  MapBytes(to, from, count, table);
}

void MapChannelsAvx2(std::uint8_t* to, const std::uint8_t* from, int width,
                     const ChannelTables& tables) {
  const ByteLookup blue(tables.blue);
  const ByteLookup green(tables.green);
  const ByteLookup red(tables.red);
  for (; width >= kPixels; width -= kPixels, to += kBlockBytes, from += kBlockBytes) {
    const Planes planes = Split(LoadBlock(from));
    StoreBlock(to, Join({blue(planes.blue), green(planes.green), red(planes.red)}));
  }
  MapChannels(to, from, width, tables);
}

}  // namespace

const ByteTableKernels& ByteTableKernels::Avx2() {
  static constexpr ByteTableKernels kKernels = {MapBytesAvx2, MapChannelsAvx2};
  return kKernels;
}

}  // namespace kernels
