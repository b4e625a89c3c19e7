// Shear kernels for AVX-512 with byte permutes.
#include "filters/geometry/rotation/ShearKernelLoops.h"

namespace kernels {
namespace {

constexpr int kMaskAt = 64;  // in an index: the first byte of the second operand

// Where the bytes of the quads lie among colours and, from kMaskAt on, masks.
constexpr Permutation kJoined = [] {
  Permutation p = {};
  for (int i = 0; i < 64; ++i) {
    p.from[i] = static_cast<std::uint8_t>(i % 4 == 3 ? kMaskAt + i / 4 : i / 4 * 3 + i % 4);
  }
  return p;
}();

// Where colours and, behind them, masks lie among the bytes of the quads.
constexpr Permutation kSorted = [] {
  Permutation p = {};
  for (int i = 0; i < 48; ++i) p.from[i] = static_cast<std::uint8_t>(i / 3 * 4 + i % 3);
  for (int i = 0; i < 16; ++i) p.from[48 + i] = static_cast<std::uint8_t>(4 * i + 3);
  return p;
}();

Bits Joined(const Bits& colours, const Bits& masks) {
  return _mm512_permutex2var_epi8(colours, kJoined, masks);
}

Bits Sorted(const Bits& quads) {
  return _mm512_permutex2var_epi8(quads, kSorted, quads);
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
    _mm512_mask_storeu_epi32(quads, static_cast<__mmask16>(FirstBytes(n)),
                             Joined(_mm512_maskz_loadu_epi8(FirstBytes(3 * n), colour),
                                    _mm512_maskz_loadu_epi8(FirstBytes(n), mask)));
  }
}

void SplitAvx512(const Quad* quads, std::uint8_t* colour, std::uint8_t* mask, int count) {
  for (; count >= kReach; count -= kQuads, colour += 3 * kQuads, mask += kQuads, quads += kQuads) {
    const Bits sorted = Sorted(_mm512_loadu_si512(quads));
    _mm512_storeu_si512(colour, sorted);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(mask), Quarter<3>(sorted));
  }
  for (; count > 0; count -= kQuads, colour += 3 * kQuads, mask += kQuads, quads += kQuads) {
    const int n = count < kQuads ? count : kQuads;
    const Bits sorted =
        Sorted(_mm512_maskz_loadu_epi32(static_cast<__mmask16>(FirstBytes(n)), quads));
    _mm512_mask_storeu_epi8(colour, FirstBytes(3 * n), sorted);
    _mm_mask_storeu_epi8(mask, static_cast<__mmask16>(FirstBytes(n)), Quarter<3>(sorted));
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
