// Shear kernels for AVX-512 with byte permutes.
#include <immintrin.h>

#include "filters/geometry/rotation/ShearKernelLoops.h"

namespace kernels {
namespace {

constexpr int kQuads = 16;   // of a vector
constexpr int kMaskAt = 64;  // in an index: the first byte of the second operand

struct alignas(64) Places {
  std::uint8_t of[64];
  __m512i Load() const { return _mm512_load_si512(of); }
};

// Where the bytes of the quads lie among colours and, from kMaskAt on, masks.
constexpr Places kJoined = [] {
  Places p = {};
  for (int i = 0; i < 64; ++i) {
    p.of[i] = static_cast<std::uint8_t>(i % 4 == 3 ? kMaskAt + i / 4 : i / 4 * 3 + i % 4);
  }
  return p;
}();

// Where colours and, behind them, masks lie among the bytes of the quads.
constexpr Places kSorted = [] {
  Places p = {};
  for (int i = 0; i < 48; ++i) p.of[i] = static_cast<std::uint8_t>(i / 3 * 4 + i % 3);
  for (int i = 0; i < 16; ++i) p.of[48 + i] = static_cast<std::uint8_t>(4 * i + 3);
  return p;
}();

constexpr __mmask64 First(int count) {
  return (__mmask64{1} << count) - 1;
}

__m512i Joined(const __m512i& colours, const __m512i& masks) {
  return _mm512_permutex2var_epi8(colours, kJoined.Load(), masks);
}

__m512i Sorted(const __m512i& quads) {
  return _mm512_permutex2var_epi8(quads, kSorted.Load(), quads);
}

// Masked loads and stores are slow. A whole vector of colours is good as long as it stays in the
// row, though a quarter of it belongs to the next step.
constexpr int kReach = 22;

void JoinAvx512(const std::uint8_t* colour, const std::uint8_t* mask, Quad* quads, int count) {
  for (; count >= kReach; count -= kQuads, colour += 3 * kQuads, mask += kQuads, quads += kQuads) {
    const __m128i masks = _mm_loadu_si128(reinterpret_cast<const __m128i*>(mask));
    _mm512_storeu_si512(quads, Joined(_mm512_loadu_si512(colour), _mm512_zextsi128_si512(masks)));
  }
  for (; count > 0; count -= kQuads, colour += 3 * kQuads, mask += kQuads, quads += kQuads) {
    const int n = count < kQuads ? count : kQuads;
    _mm512_mask_storeu_epi32(quads, static_cast<__mmask16>(First(n)),
                             Joined(_mm512_maskz_loadu_epi8(First(3 * n), colour),
                                    _mm512_maskz_loadu_epi8(First(n), mask)));
  }
}

void SplitAvx512(const Quad* quads, std::uint8_t* colour, std::uint8_t* mask, int count) {
  for (; count >= kReach; count -= kQuads, colour += 3 * kQuads, mask += kQuads, quads += kQuads) {
    const __m512i sorted = Sorted(_mm512_loadu_si512(quads));
    _mm512_storeu_si512(colour, sorted);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(mask),
                     _mm512_maskz_extracti32x4_epi32(15, sorted, 3));
  }
  for (; count > 0; count -= kQuads, colour += 3 * kQuads, mask += kQuads, quads += kQuads) {
    const int n = count < kQuads ? count : kQuads;
    const __m512i sorted =
        Sorted(_mm512_maskz_loadu_epi32(static_cast<__mmask16>(First(n)), quads));
    _mm512_mask_storeu_epi8(colour, First(3 * n), sorted);
    _mm_mask_storeu_epi8(mask, static_cast<__mmask16>(First(n)),
                         _mm512_maskz_extracti32x4_epi32(15, sorted, 3));
  }
}

}  // namespace

const ShearKernelTable& ShearKernelTable::Avx512() {
  // A wider transposition gains nothing over the eight quads of AVX2.
  static const ShearKernelTable kTable = {JoinAvx512, SplitAvx512,
                                          ShearKernelTable::Avx2().transpose, BlendSame, BlendEach};
  return kTable;
}

}  // namespace kernels
