// Byte tables for AVX-512 with byte permutes (VBMI).
#include "filters/pixels/ByteTableKernels.h"
#include "filters/pixels/simd/PixelBlocks.h"

namespace kernels {
namespace {

void MapBytesAvx512(std::uint8_t* to, const std::uint8_t* from, std::size_t count,
                    const ByteTable& table) {
  const ByteLookup map(table);
  for (; count >= kBlockBytes; count -= kBlockBytes, to += kBlockBytes, from += kBlockBytes) {
    Prefetch(from);
    Prefetch(to);
    const Block block = LoadBlock(from);
    StoreBlock(to, {map(block.part0), map(block.part1), map(block.part2)});
  }
  for (; count >= 64; count -= 64, to += 64, from += 64) {
    Store(to, map(Load<Bytes>(from)));
  }
  const auto rest = static_cast<std::ptrdiff_t>(count);
  StoreFront(to, map(LoadFront(from, rest)), rest);
}

// The places of a part of a block that hold bytes of a channel.
constexpr __mmask64 PlacesOf(int channel, int part) {
  __mmask64 places = 0;
  for (int j = 0; j < 64; ++j) {
    if ((64 * part + j) % 3 == channel) places |= __mmask64{1} << j;
  }
  return places;
}

// A block is mapped where it lies, three times over: taking it apart and putting it together would
// need as many permutes.
template <int kPart>
[[gnu::always_inline]] inline Bytes MapPart(const ByteLookup (&maps)[3], Bytes bytes) {
  const auto mapped = [&](int channel) { return (Bits)maps[channel](bytes); };
  const Bits two = _mm512_mask_mov_epi8(mapped(0), PlacesOf(1, kPart), mapped(1));
  return (Bytes)_mm512_mask_mov_epi8(two, PlacesOf(2, kPart), mapped(2));
}

void MapChannelsAvx512(std::uint8_t* to, const std::uint8_t* from, int width,
                       const ChannelTables& tables) {
  const ByteLookup maps[] = {ByteLookup(tables.blue), ByteLookup(tables.green),
                             ByteLookup(tables.red)};
  for (; width >= kPixels; width -= kPixels, to += kBlockBytes, from += kBlockBytes) {
    Prefetch(from);
    Prefetch(to);
    const Block block = LoadBlock(from);
    StoreBlock(to, {MapPart<0>(maps, block.part0), MapPart<1>(maps, block.part1),
                    MapPart<2>(maps, block.part2)});
  }
  MapChannels(to, from, width, tables);
}

}  // namespace

const ByteTableKernels& ByteTableKernels::Avx512() {
  static constexpr ByteTableKernels kKernels = {MapBytesAvx512, MapChannelsAvx512};
  return kKernels;
}

}  // namespace kernels
