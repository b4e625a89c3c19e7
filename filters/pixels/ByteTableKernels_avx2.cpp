// Byte tables for AVX2.
#include "filters/pixels/ByteTableKernels.h"
#include "filters/pixels/simd/PixelBlocks.h"

namespace kernels {
namespace {

void MapBytesAvx2(std::uint8_t* to, const std::uint8_t* from, std::size_t count,
                  const ByteTable& table) {
  const ByteLookup map(table);
  for (; count >= kBlockBytes; count -= kBlockBytes, to += kBlockBytes, from += kBlockBytes) {
    Prefetch(from);
    Prefetch(to);
    const Block block = LoadBlock(from);
    StoreBlock(to, {map(block.part0), map(block.part1), map(block.part2)});
  }
  MapBytes(to, from, count, table);
}

void MapChannelsAvx2(std::uint8_t* to, const std::uint8_t* from, int width,
                     const ChannelTables& tables) {
  const ByteLookup blue(tables.blue);
  const ByteLookup green(tables.green);
  const ByteLookup red(tables.red);
  for (; width >= kPixels; width -= kPixels, to += kBlockBytes, from += kBlockBytes) {
    Prefetch(from);
    Prefetch(to);
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
