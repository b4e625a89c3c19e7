// Byte tables for AVX-512 with byte permutes (VBMI).
#include "filters/pixels/ByteTableKernels.h"

#include "filters/pixels/ByteLookup_avx512.h"
#include "filters/pixels/simd/PixelBlocks_avx512.h"

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
    _mm512_storeu_si512(to, map(_mm512_loadu_si512(from)));
  }
  const __mmask64 rest = (__mmask64{1} << count) - 1;
  _mm512_mask_storeu_epi8(to, rest, map(_mm512_maskz_loadu_epi8(rest, from)));
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
[[gnu::always_inline]] inline __m512i MapPart(const ByteLookup (&maps)[3], __m512i bytes) {
  const __m512i two = _mm512_mask_mov_epi8(maps[0](bytes), PlacesOf(1, kPart), maps[1](bytes));
  return _mm512_mask_mov_epi8(two, PlacesOf(2, kPart), maps[2](bytes));
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
