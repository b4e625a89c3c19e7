// Reduction kernels for AVX-512 with byte permutes and byte products (VBMI, VNNI).
#include "filters/pixels/resampling/ReductionKernelLoops.h"
#include "filters/pixels/simd/Vectors.h"

namespace kernels {
namespace {

constexpr int kTaps = 16;  // of a block, whose bytes fill a vector channel by channel
// Where a 1 stands behind the pixels of a block, and of a pair of rows.
constexpr int kOneAt = 48;
constexpr int kPairOneAt = 24;
static_assert(kWeightBlock == kTaps);

// A quarter for each channel, and one that has the same byte throughout.
constexpr Permutation ByChannel() {
  Permutation p = {};
  for (int i = 0; i < 64; ++i) {
    p.from[i] = static_cast<std::uint8_t>(i < 48 ? 3 * (i % 16) + i / 16 : kOneAt);
  }
  return p;
}

// The same for eight pixels of a row and eight of another one, which is the upper half.
constexpr Permutation PairByChannel() {
  Permutation p = {};
  for (int i = 0; i < 64; ++i) {
    const int pixel = 3 * (i % 8) + (i % 16 < 8 ? 0 : 32);
    p.from[i] = static_cast<std::uint8_t>(i < 48 ? pixel + i / 16 : kPairOneAt);
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
constexpr Permutation kPairByChannel = PairByChannel();
constexpr Permutation kLowBytes = EachByte(0);
constexpr Permutation kHighBytes = EachByte(1);

// The first byte of each of four 32-bit numbers a quarter.
struct alignas(64) FirstOfQuarters {
  std::uint32_t from[16] = {0, 4, 8, 12};
  operator Bits() const { return _mm512_load_si512(from); }
};
constexpr FirstOfQuarters kFirstOfQuarters;

Bits Permute(const Permutation& how, Bits bytes) {
  return _mm512_maskz_permutexvar_epi8(kAll64, how, bytes);
}

// 16 weights, their bytes apart.
struct Weights {
  Bits low, high;

  Weights() = default;
  explicit Weights(Bits pairs) : low(Permute(kLowBytes, pairs)), high(Permute(kHighBytes, pairs)) {}
};

// Products of weights, without sign, and bytes, with one, are summed in fours: taken 128 off, bytes
// fit.
class Sums {
 public:
  void Add(const Weights& weights, Bits bytes) {
    low_ = _mm512_dpbusd_epi32(low_, weights.low, bytes);
    high_ = _mm512_dpbusd_epi32(high_, weights.high, bytes);
  }
  // One sum for each quarter of the bytes.
  __m128i ByQuarter() const {
    Bits sum = _mm512_add_epi32(low_, _mm512_maskz_slli_epi32(kAll16, high_, 8));
    sum = _mm512_add_epi32(sum, _mm512_maskz_shuffle_epi32(kAll16, sum, _MM_PERM_CDAB));
    sum = _mm512_add_epi32(sum, _mm512_maskz_shuffle_epi32(kAll16, sum, _MM_PERM_BADC));
    return _mm512_maskz_extracti32x4_epi32(
        15, _mm512_maskz_permutexvar_epi32(kAll16, kFirstOfQuarters, sum), 0);
  }

 private:
  Bits low_ = _mm512_setzero_si512();
  Bits high_ = _mm512_setzero_si512();
};

// Turns the top bits of all bytes, which takes 128 off, and makes the one byte a 1.
template <int kAt>
Bits TurnTopBits(Bits bytes) {
  const Bits turned =
      _mm512_mask_mov_epi8(_mm512_set1_epi8(-128), __mmask64{1} << kAt, _mm512_set1_epi8(1));
  return _mm512_xor_si512(bytes, turned);
}

// What was taken off the channels, given their sums and, as the last one, that of the weights.
__m128i GiveBack(__m128i sums) {
  const __m128i weight = _mm_shuffle_epi32(sums, _MM_SHUFFLE(3, 3, 3, 3));
  return _mm_add_epi32(sums, _mm_maskz_slli_epi32(7, weight, 7));
}

__m128i Load16(const void* at) {
  return _mm_loadu_si128(static_cast<const __m128i*>(at));
}

// Up to eight weights of each of two rows, which is what most windows have; the second row may be
// missing.
Weights PairOfWeights(const std::uint16_t* first, const std::uint16_t* second) {
  const Bits pairs = _mm512_zextsi128_si512(Load16(first));
  return Weights(second ? _mm512_maskz_inserti32x4(kAll16, pairs, Load16(second), 1) : pairs);
}

// The weights of the windows met last: windows with the same weights come again and again.
class KeptWeights {
 public:
  explicit KeptWeights(const ReductionRows& rows) : rows_(rows) {}

  static bool Fit(const ReductionRun& run, const ReductionRows& rows) {
    return run.taps <= kTaps / 2 && rows.count <= 2 * kPairs;
  }

  // Of each pair of rows.
  const Weights* Of(const ReductionRun& run) {
    const std::size_t slot = run.weights / kWeightBlock % kSlots;
    if (!isFilled_[slot] || places_[slot] != run.weights) Fill(slot, run.weights);
    return weights_[slot];
  }

 private:
  static constexpr int kSlots = 16;
  static constexpr int kPairs = 8;

  void Fill(std::size_t slot, std::size_t place) {
    isFilled_[slot] = true;
    places_[slot] = place;
    const std::uint16_t* at = rows_.weights + place;
    for (int y = 0; y < rows_.count; y += 2, at += 2 * rows_.weightStride) {
      weights_[slot][y / 2] =
          PairOfWeights(at, y + 1 < rows_.count ? at + rows_.weightStride : nullptr);
    }
  }

  const ReductionRows& rows_;
  bool isFilled_[kSlots] = {};
  std::size_t places_[kSlots];
  Weights weights_[kSlots][kPairs];
};

// Calls add(weights, colours, how to sort them by channel, mask bytes) for each pair of rows under
// a run of up to eight taps. The second row of the last pair may be missing: nothing weighs there.
template <bool kMasked, class Add>
[[gnu::always_inline]] inline void ForPairs(const ReductionRun& run, const ReductionRows& rows,
                                            const Weights* weights, Add add) {
  const auto colourBytes = static_cast<__mmask32>(FirstBytes(3 * run.taps));
  const auto maskBytes = static_cast<__mmask16>(FirstBytes(run.taps));
  const std::ptrdiff_t at = 3 * static_cast<std::ptrdiff_t>(run.first);
  const auto load = [&](int y) {
    return _mm256_maskz_loadu_epi8(colourBytes, rows.colour[y] + at);
  };
  const auto loadMask = [&](int y) {
    return kMasked ? _mm_maskz_loadu_epi8(maskBytes, rows.mask[y] + run.first)
                   : _mm_setzero_si128();
  };
  int y = 0;
  for (; y + 1 < rows.count; y += 2) {
    const Bits first = _mm512_castsi256_si512(load(y));
    add(weights[y / 2],
        TurnTopBits<kPairOneAt>(_mm512_maskz_inserti64x4(kAll8, first, load(y + 1), 1)),
        kPairByChannel, _mm_unpacklo_epi64(loadMask(y), loadMask(y + 1)));
  }
  if (y < rows.count) {
    add(weights[y / 2], TurnTopBits<kPairOneAt>(_mm512_maskz_broadcast_i64x4(0x0F, load(y))),
        kPairByChannel, loadMask(y));
  }
}

// The same for each block of taps in each row.
template <bool kMasked, class Add>
[[gnu::always_inline]] inline void ForBlocks(const ReductionRun& run, const ReductionRows& rows,
                                             Add add) {
  const std::uint16_t* weights = rows.weights + run.weights;
  for (int y = 0; y < rows.count; ++y, weights += rows.weightStride) {
    const std::uint8_t* const colour = rows.colour[y] + 3 * static_cast<std::ptrdiff_t>(run.first);
    for (int t = 0; t < run.taps; t += kTaps) {
      const int taps = run.taps - t < kTaps ? run.taps - t : kTaps;
      const Bits colours = _mm512_maskz_loadu_epi8(FirstBytes(3 * taps),
                                                   colour + 3 * static_cast<std::ptrdiff_t>(t));
      const __m128i mask = kMasked ? _mm_maskz_loadu_epi8(static_cast<__mmask16>(FirstBytes(taps)),
                                                          rows.mask[y] + run.first + t)
                                   : _mm_setzero_si128();
      add(Weights(_mm512_maskz_loadu_epi16(0xFFFF, weights + t)), TurnTopBits<kOneAt>(colours),
          kByChannel, mask);
    }
  }
}

template <bool kMasked, class Add>
[[gnu::always_inline]] inline void ForRun(const ReductionRun& run, const ReductionRows& rows,
                                          KeptWeights& kept, Add add) {
  if (run.taps == 0) return;  // there may be no weights to load
  if (KeptWeights::Fit(run, rows)) {
    ForPairs<kMasked>(run, rows, kept.Of(run), add);
  } else {
    ForBlocks<kMasked>(run, rows, add);
  }
}

void Store(ColourSums& to, __m128i sums) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(&to), sums);
}

void SumColoursAvx512(const ReductionRun* runs, int count, int, const ReductionRows& rows,
                      ColourSums* sums) {
  KeptWeights kept(rows);
  for (int i = 0; i < count; ++i) {
    Sums sum;
    ForRun<false>(runs[i], rows, kept,
                  [&sum](const Weights& weights, Bits colours, const Permutation& how, __m128i) {
                    sum.Add(weights, Permute(how, colours));
                  });
    Store(sums[i], GiveBack(sum.ByQuarter()));
  }
}

// The last quarter sums the weights of the taps whose colours count. A vector beside it has the
// opacities, taken 128 off, and ones.
void SumMaskedAvx512(const ReductionRun* runs, int count, int, const ReductionRows& rows,
                     ColourSums* sums, std::uint32_t* opacities) {
  const Bits ones = _mm512_set1_epi8(1);
  KeptWeights kept(rows);
  for (int i = 0; i < count; ++i) {
    Sums sum;
    Sums opacitySum;
    ForRun<true>(runs[i], rows, kept,
                 [&](const Weights& weights, Bits colours, const Permutation& how, __m128i mask) {
                   const __mmask16 counts = _mm_cmpneq_epi8_mask(mask, _mm_set1_epi8(-1));
                   const __mmask64 inAllQuarters = __mmask64{counts} * 0x0001000100010001;
                   sum.Add(weights, _mm512_maskz_permutexvar_epi8(inAllQuarters, how, colours));
                   const __m128i opacity = _mm_xor_si128(mask, _mm_set1_epi8(127));
                   opacitySum.Add(weights, _mm512_mask_broadcast_i32x4(ones, 15, opacity));
                 });
    Store(sums[i], GiveBack(sum.ByQuarter()));
    const __m128i opacity = opacitySum.ByQuarter();
    opacities[i] = static_cast<std::uint32_t>(_mm_extract_epi32(opacity, 0)) +
                   (static_cast<std::uint32_t>(_mm_extract_epi32(opacity, 1)) << 7);
  }
}

// Four pixels. A float quotient can be wrong by one, which the remainder tells: sums and weights
// fit 32 and 24 bits.
__m128i DivideFour(Bits sums) {
  const Bits weight = _mm512_maskz_shuffle_epi32(kAll16, sums, _MM_PERM_DDDD);
  const Bits dividend = _mm512_add_epi32(sums, _mm512_maskz_srli_epi32(kAll16, weight, 1));
  const __mmask16 counts = _mm512_test_epi32_mask(weight, weight);
  const __m512 ratio = _mm512_maskz_div_ps(counts, _mm512_maskz_cvtepu32_ps(kAll16, dividend),
                                           _mm512_maskz_cvtepu32_ps(kAll16, weight));
  Bits quotient = _mm512_maskz_cvttps_epi32(kAll16, ratio);
  const Bits rest = _mm512_sub_epi32(dividend, _mm512_mullo_epi32(quotient, weight));
  const Bits one = _mm512_set1_epi32(1);
  const __mmask16 over = _mm512_movepi32_mask(rest);
  const __mmask16 under = _mm512_mask_cmpge_epi32_mask(counts, rest, weight);
  quotient = _mm512_mask_sub_epi32(quotient, over, quotient, one);
  quotient = _mm512_mask_add_epi32(quotient, under, quotient, one);
  const __m128i bytes = _mm512_maskz_cvtepi32_epi8(kAll16, quotient);
  return _mm_shuffle_epi8(bytes,
                          _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1));
}

void DivideAvx512(std::uint8_t* colour, const ColourSums* sums, int count) {
  for (; count > 0; count -= 4, sums += 4, colour += 12) {
    const int pixels = count < 4 ? count : 4;
    const auto numbers = static_cast<__mmask16>(FirstBytes(4 * pixels));
    _mm_mask_storeu_epi8(colour, static_cast<__mmask16>(FirstBytes(3 * pixels)),
                         DivideFour(_mm512_maskz_loadu_epi32(numbers, sums)));
  }
}

}  // namespace

const ReductionKernels& ReductionKernels::Avx512() {
  static constexpr ReductionKernels kTable = {SumColoursAvx512, SumMaskedAvx512, DivideAvx512,
                                              SharpenLoop, SharpenMaskedLoop};
  return kTable;
}

}  // namespace kernels
