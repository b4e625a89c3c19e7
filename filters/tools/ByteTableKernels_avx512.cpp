// Byte tables for AVX-512 with byte permutes (VBMI).
//
// Calls no inline function of another header: one that the linker shares between files would carry
// wide instructions to processors that lack them.
#include "filters/tools/ByteTableKernels.h"

#include "filters/tools/PixelBlocks_avx512.h"

namespace kernels {
namespace {

// The whole table in four registers.
class RegisterTable {
 public:
  explicit RegisterTable(const ByteTable& table) {
    const auto* const entries = reinterpret_cast<const std::uint8_t*>(&table);
    quarter0_ = _mm512_loadu_si512(entries);
    quarter1_ = _mm512_loadu_si512(entries + 64);
    quarter2_ = _mm512_loadu_si512(entries + 128);
    quarter3_ = _mm512_loadu_si512(entries + 192);
  }

  // The permutes look at seven bits; the eighth chooses between the halves.
  [[gnu::always_inline]] __m512i operator()(__m512i bytes) const {
    const __m512i low = _mm512_permutex2var_epi8(quarter0_, bytes, quarter1_);
    const __m512i high = _mm512_permutex2var_epi8(quarter2_, bytes, quarter3_);
    return _mm512_mask_mov_epi8(low, _mm512_movepi8_mask(bytes), high);
  }

 private:
  __m512i quarter0_, quarter1_, quarter2_, quarter3_;
};

void MapBytesAvx512(std::uint8_t* to, const std::uint8_t* from, std::size_t count,
                    const ByteTable& table) {
  const RegisterTable map(table);
#pragma GCC unroll 4
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
[[gnu::always_inline]] inline __m512i MapPart(const RegisterTable (&maps)[3], __m512i bytes) {
  const __m512i two = _mm512_mask_mov_epi8(maps[0](bytes), PlacesOf(1, kPart), maps[1](bytes));
  return _mm512_mask_mov_epi8(two, PlacesOf(2, kPart), maps[2](bytes));
}

void MapChannelsAvx512(std::uint8_t* to, const std::uint8_t* from, int width,
                       const ChannelTables& tables) {
  const RegisterTable maps[] = {RegisterTable(tables.blue), RegisterTable(tables.green),
                                RegisterTable(tables.red)};
  for (; width >= kPixels; width -= kPixels, to += kBlockBytes, from += kBlockBytes) {
    Prefetch(from);
    const __m512i part0 = MapPart<0>(maps, _mm512_loadu_si512(from));
    const __m512i part1 = MapPart<1>(maps, _mm512_loadu_si512(from + 64));
    const __m512i part2 = MapPart<2>(maps, _mm512_loadu_si512(from + 128));
    _mm512_storeu_si512(to, part0);
    _mm512_storeu_si512(to + 64, part1);
    _mm512_storeu_si512(to + 128, part2);
  }
  MapChannels(to, from, width, tables);
}

}  // namespace

const ByteTableKernels& Avx512ByteTableKernels() {
  static constexpr ByteTableKernels kKernels = {MapBytesAvx512, MapChannelsAvx512};
  return kKernels;
}

}  // namespace kernels
