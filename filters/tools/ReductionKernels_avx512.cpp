// Reduction kernels for AVX-512 with byte permutes and byte products (VBMI, VNNI).
//
// Calls no inline function of another header: one that the linker shares between files would carry
// wide instructions to processors that lack them.
#include <immintrin.h>

#include "filters/tools/ReductionKernelLoops.h"

namespace kernels {
namespace {

constexpr int kTaps = 16;  // of a block, whose bytes fill a vector channel by channel
static_assert(kWeightBlock == kTaps);

// Which byte each byte of a permuted vector comes from.
struct alignas(64) Permutation {
  std::uint8_t from[64];
  operator __m512i() const { return _mm512_load_si512(from); }
};

// A quarter for each channel, and one that has the byte behind the pixels throughout.
constexpr Permutation ByChannel() {
  Permutation p = {};
  for (int i = 0; i < 64; ++i) {
    p.from[i] = static_cast<std::uint8_t>(i < 48 ? 3 * (i % 16) + i / 16 : 48);
  }
  return p;
}

// One byte of each of 16 numbers of 16 bits, in each quarter.
constexpr Permutation EachByte(int byte) {
  Permutation p = {};
  for (int i = 0; i < 64; ++i) p.from[i] = static_cast<std::uint8_t>(2 * (i % 16) + byte);
  return p;
}

constexpr Permutation kByChannel = ByChannel();
constexpr Permutation kLowBytes = EachByte(0);
constexpr Permutation kHighBytes = EachByte(1);

// The first byte of each of four 32-bit numbers a quarter.
struct alignas(64) FirstOfQuarters {
  std::uint32_t from[16] = {0, 4, 8, 12};
  operator __m512i() const { return _mm512_load_si512(from); }
};
constexpr FirstOfQuarters kFirstOfQuarters;

// GCC 12 warns of its own unmasked forms of these; a full mask compiles to the same instruction.
__m512i Permute(const Permutation& how, __m512i bytes) {
  return _mm512_maskz_permutexvar_epi8(~__mmask64{0}, how, bytes);
}

// 16 weights, their bytes apart.
struct Weights {
  __m512i low, high;

  explicit Weights(const std::uint16_t* at) {
    const __m512i pairs = _mm512_maskz_loadu_epi16(0xFFFF, at);
    low = Permute(kLowBytes, pairs);
    high = Permute(kHighBytes, pairs);
  }
};

// Products of weights, without sign, and bytes, with one, are summed in fours: taken 128 off, bytes
// fit.
class Sums {
 public:
  void Add(const Weights& weights, __m512i bytes) {
    low_ = _mm512_dpbusd_epi32(low_, weights.low, bytes);
    high_ = _mm512_dpbusd_epi32(high_, weights.high, bytes);
  }
  // One sum for each quarter of the bytes.
  __m128i ByQuarter() const {
    __m512i sum = _mm512_add_epi32(low_, _mm512_maskz_slli_epi32(kAll, high_, 8));
    sum = _mm512_add_epi32(sum, _mm512_maskz_shuffle_epi32(kAll, sum, _MM_PERM_CDAB));
    sum = _mm512_add_epi32(sum, _mm512_maskz_shuffle_epi32(kAll, sum, _MM_PERM_BADC));
    return _mm512_maskz_extracti32x4_epi32(
        15, _mm512_maskz_permutexvar_epi32(kAll, kFirstOfQuarters, sum), 0);
  }

 private:
  static constexpr __mmask16 kAll = 0xFFFF;

  __m512i low_ = _mm512_setzero_si512();
  __m512i high_ = _mm512_setzero_si512();
};

// Turns the top bits of 48 bytes, which takes 128 off, and makes the first byte behind them 1.
__m512i TurnTopBits(__m512i bytes) {
  const __m512i turned =
      _mm512_set_epi64(0, 1, -0x7F7F7F7F7F7F7F80, -0x7F7F7F7F7F7F7F80, -0x7F7F7F7F7F7F7F80,
                       -0x7F7F7F7F7F7F7F80, -0x7F7F7F7F7F7F7F80, -0x7F7F7F7F7F7F7F80);
  return _mm512_xor_si512(bytes, turned);
}

// What was taken off, given the sums of a run and, as the last one, its weight.
__m128i GiveBack(__m128i sums) {
  const __m128i weight = _mm_shuffle_epi32(sums, _MM_SHUFFLE(3, 3, 3, 3));
  return _mm_add_epi32(sums, _mm_slli_epi32(weight, 7));
}

constexpr __mmask64 FirstBytes(int count) {
  return (__mmask64{1} << count) - 1;
}

// Calls add(weights, colours, mask bytes, taps) for each block of a run.
template <bool kMasked, class Add>
[[gnu::always_inline]] inline void ForBlocks(const ReductionRun& run, const ReductionRows& rows,
                                             Add add) {
  for (int y = 0; y < rows.count; ++y) {
    const std::uint8_t* const colour = rows.colour[y] + 3 * static_cast<std::ptrdiff_t>(run.first);
    const std::uint16_t* const weights =
        rows.weights + static_cast<std::size_t>(y) * rows.weightStride + run.weights;
    for (int t = 0; t < run.taps; t += kTaps) {
      const int taps = run.taps - t < kTaps ? run.taps - t : kTaps;
      const __m512i colours = _mm512_maskz_loadu_epi8(FirstBytes(3 * taps),
                                                      colour + 3 * static_cast<std::ptrdiff_t>(t));
      __m128i mask = _mm_setzero_si128();
      if (kMasked) {
        mask = _mm_maskz_loadu_epi8(static_cast<__mmask16>(FirstBytes(taps)),
                                    rows.mask[y] + run.first + t);
      }
      add(Weights(weights + t), TurnTopBits(colours), mask);
    }
  }
}

void SumColoursAvx512(const ReductionRun* runs, int count, int, const ReductionRows& rows,
                      ColourSums* sums) {
  for (int i = 0; i < count; ++i) {
    Sums sum;
    ForBlocks<false>(runs[i], rows, [&sum](const Weights& weights, __m512i colours, __m128i) {
      sum.Add(weights, Permute(kByChannel, colours));
    });
    _mm_mask_storeu_epi32(sums[i].channel, 7, GiveBack(sum.ByQuarter()));
  }
}

// The last quarter sums the weights of the taps whose colours count. A vector beside it has the
// opacities, taken 128 off, and ones.
void SumMaskedAvx512(const ReductionRun* runs, int count, int, const ReductionRows& rows,
                     MaskedSums* sums) {
  const __m512i ones = _mm512_set1_epi8(1);
  for (int i = 0; i < count; ++i) {
    Sums sum;
    Sums opacities;
    ForBlocks<true>(runs[i], rows, [&](const Weights& weights, __m512i colours, __m128i mask) {
      const __mmask16 counts = _mm_cmpneq_epi8_mask(mask, _mm_set1_epi8(-1));
      const __mmask64 inAllQuarters = __mmask64{counts} * 0x0001000100010001;
      sum.Add(weights, _mm512_maskz_permutexvar_epi8(inAllQuarters, kByChannel, colours));
      const __m128i opacity = _mm_xor_si128(mask, _mm_set1_epi8(127));
      opacities.Add(weights, _mm512_mask_broadcast_i32x4(ones, 15, opacity));
    });
    const __m128i colour = sum.ByQuarter();
    _mm_mask_storeu_epi32(sums[i].channel, 15, colour);
    _mm_mask_storeu_epi32(sums[i].channel, 7, GiveBack(colour));
    const __m128i opacity = opacities.ByQuarter();
    sums[i].opacity = static_cast<std::uint32_t>(_mm_extract_epi32(opacity, 0)) +
                      (static_cast<std::uint32_t>(_mm_extract_epi32(opacity, 1)) << 7);
  }
}

}  // namespace

const ReductionKernels& Avx512ReductionKernels() {
  static constexpr ReductionKernels kTable = {SumColoursAvx512, SumMaskedAvx512, SharpenLoop,
                                              SharpenMaskedLoop};
  return kTable;
}

}  // namespace kernels
