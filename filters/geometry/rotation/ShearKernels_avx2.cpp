// Shear kernels for AVX2.
#include "filters/geometry/rotation/ShearKernelLoops.h"

namespace kernels {
namespace {

// Four pixels of three bytes become four quads; 255 makes a byte 0.
constexpr Pattern kSpread = {{0, 1, 2, 255, 3, 4, 5, 255, 6, 7, 8, 255, 9, 10, 11, 255}};
// Four quads become their colours and, behind them, masks.
constexpr Pattern kSorted = {{0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 3, 7, 11, 15}};

__m128i LoadHalf(const std::uint8_t* at) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
}

// The halves of a vector of colours reach four bytes beyond its eight pixels.
constexpr int kReach = kQuads + 2;

void JoinAvx2(const std::uint8_t* colour, const std::uint8_t* mask, Quad* quads, int count) {
  for (; count >= kReach; count -= kQuads, colour += 3 * kQuads, mask += kQuads, quads += kQuads) {
    const Bits colours =
        _mm256_shuffle_epi8(_mm256_set_m128i(LoadHalf(colour + 12), LoadHalf(colour)), kSpread);
    const Bits masks =
        _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(mask)));
    Store(quads, _mm256_or_si256(colours, _mm256_slli_epi32(masks, kMaskShift)));
  }
  JoinQuads(colour, mask, quads, count);
}

void SplitAvx2(const Quad* quads, std::uint8_t* colour, std::uint8_t* mask, int count) {
  for (; count >= kReach; count -= kQuads, colour += 3 * kQuads, mask += kQuads, quads += kQuads) {
    const Bits sorted = _mm256_shuffle_epi8(Load<Bits>(quads), kSorted);
    const __m128i low = _mm256_castsi256_si128(sorted);
    const __m128i high = _mm256_extracti128_si256(sorted, 1);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(colour), low);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(colour + 12), high);
    const std::uint64_t masks =
        static_cast<std::uint32_t>(_mm_extract_epi32(low, 3)) |
        static_cast<std::uint64_t>(static_cast<std::uint32_t>(_mm_extract_epi32(high, 3))) << 32;
    __builtin_memcpy(mask, &masks, sizeof masks);
  }
  SplitQuads(quads, colour, mask, count);
}

// Eight rows become eight columns: pairs of quads, pairs of pairs, then halves change places.
void TransposeBlock(const Quad* from, std::ptrdiff_t fromStride, Quad* to,
                    std::ptrdiff_t toStride) {
  Bits rows[8], pairs[8], fours[8];
#pragma GCC unroll 8
  for (int i = 0; i < 8; ++i) {
    rows[i] = Load<Bits>(from + i * fromStride);
  }
#pragma GCC unroll 4
  for (int i = 0; i < 4; ++i) {
    pairs[2 * i] = _mm256_unpacklo_epi32(rows[2 * i], rows[2 * i + 1]);
    pairs[2 * i + 1] = _mm256_unpackhi_epi32(rows[2 * i], rows[2 * i + 1]);
  }
#pragma GCC unroll 4
  for (int i = 0; i < 4; ++i) {
    const int first = i / 2 * 4 + i % 2;
    fours[first / 4 * 4 + i % 2 * 2] = _mm256_unpacklo_epi64(pairs[first], pairs[first + 2]);
    fours[first / 4 * 4 + i % 2 * 2 + 1] = _mm256_unpackhi_epi64(pairs[first], pairs[first + 2]);
  }
#pragma GCC unroll 4
  for (int i = 0; i < 4; ++i) {
    Store(to + i * toStride, _mm256_permute2x128_si256(fours[i], fours[i + 4], 0x20));
    Store(to + (i + 4) * toStride, _mm256_permute2x128_si256(fours[i], fours[i + 4], 0x31));
  }
}

void TransposeAvx2(const Quad* from, std::ptrdiff_t fromStride, Quad* to, std::ptrdiff_t toStride,
                   int width, int height) {
  const int wholeW = width / 8 * 8;
  const int wholeH = height / 8 * 8;
  for (int x = 0; x < wholeW; x += 8) {
    for (int y = 0; y < wholeH; y += 8) {
      TransposeBlock(from + y * fromStride + x, fromStride, to + x * toStride + y, toStride);
    }
  }
  TransposeQuads(from + wholeW, fromStride, to + wholeW * toStride, toStride, width - wholeW,
                 height);
  TransposeQuads(from + wholeH * fromStride, fromStride, to + wholeH, toStride, wholeW,
                 height - wholeH);
}

}  // namespace

const ShearKernelTable& ShearKernelTable::Avx2() {
  static constexpr ShearKernelTable kTable = {JoinAvx2, SplitAvx2, TransposeAvx2, BlendSame,
                                              BlendEach};
  return kTable;
}

}  // namespace kernels
