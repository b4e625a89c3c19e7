// Byte tables for AVX2.
//
// Calls no inline function of another header: one that the linker shares between files would carry
// wide instructions to processors that lack them.
#include "filters/tools/ByteTableKernels.h"

#include "filters/tools/PixelBlocks_avx2.h"

namespace kernels {
namespace {

// The table in 16 parts of 16 entries, each of which a shuffle looks up by the lower four bits of a
// byte and leaves at 0 where the top bit is set. A byte is brought down by 16 from part to part, so
// that it leaves the range of the parts above its own; as each part holds what differs from the
// part before it, the found entries of the others cancel out. Both halves of the table work so.
class TableParts {
 public:
  explicit TableParts(const ByteTable& table) {
    const auto* const entries = reinterpret_cast<const std::uint8_t*>(&table);
    for (int half = 0; half < 2; ++half) {
      __m256i before = _mm256_setzero_si256();
      for (int i = 8 * half; i < 8 * half + 8; ++i) {
        const __m256i part = _mm256_broadcastsi128_si256(
            _mm_loadu_si128(reinterpret_cast<const __m128i*>(entries + 16 * i)));
        parts_[i] = _mm256_xor_si256(part, before);
        before = part;
      }
    }
  }

  [[gnu::always_inline]] __m256i operator()(__m256i bytes) const {
    const __m256i top = _mm256_set1_epi8(-128);
    return _mm256_xor_si256(LookUp(parts_, bytes),
                            LookUp(parts_ + 8, _mm256_xor_si256(bytes, top)));
  }

 private:
  // Of bytes below 128; the others, which saturate at -128, give 0.
  [[gnu::always_inline]] static __m256i LookUp(const __m256i* parts, __m256i bytes) {
    const __m256i step = _mm256_set1_epi8(16);
    __m256i found = _mm256_shuffle_epi8(parts[0], bytes);
#pragma GCC unroll 7
    for (int i = 1; i < 8; ++i) {
      bytes = _mm256_subs_epi8(bytes, step);
      found = _mm256_xor_si256(found, _mm256_shuffle_epi8(parts[i], bytes));
    }
    return found;
  }

  __m256i parts_[16];
};

void MapBytesAvx2(std::uint8_t* to, const std::uint8_t* from, std::size_t count,
                  const ByteTable& table) {
  const TableParts map(table);
  for (; count >= 32; count -= 32, to += 32, from += 32) Store(to, map(Load(from)));
  MapBytes(to, from, count, table);
}

void MapChannelsAvx2(std::uint8_t* to, const std::uint8_t* from, int width,
                     const ChannelTables& tables) {
  const TableParts blue(tables.blue);
  const TableParts green(tables.green);
  const TableParts red(tables.red);
  for (; width >= kPixels; width -= kPixels, to += kBlockBytes, from += kBlockBytes) {
    const Planes planes = Split({Load(from), Load(from + 32), Load(from + 64)});
    const Block mapped = Join({blue(planes.blue), green(planes.green), red(planes.red)});
    Store(to, mapped.part0);
    Store(to + 32, mapped.part1);
    Store(to + 64, mapped.part2);
  }
  MapChannels(to, from, width, tables);
}

}  // namespace

const ByteTableKernels& Avx2ByteTableKernels() {
  static constexpr ByteTableKernels kKernels = {MapBytesAvx2, MapChannelsAvx2};
  return kKernels;
}

}  // namespace kernels
