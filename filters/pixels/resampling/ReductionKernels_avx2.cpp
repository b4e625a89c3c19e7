// Reduction kernels for AVX2.
#include "filters/pixels/resampling/ReductionKernelLoops.h"
#include "filters/pixels/simd/Vectors.h"

namespace kernels {
namespace {

constexpr int kTaps = 4;  // of a block: two in each half, their channels side by side
static_assert(kWeightBlock % kTaps == 0);

constexpr char kNo = -1;  // makes a byte 0

Bits Twice(const void* at) {
  return _mm256_broadcastsi128_si256(_mm_loadu_si128(static_cast<const __m128i*>(at)));
}

// The bytes of four pixels as numbers of 16 bits: pairs of blue, green and red, and a pair of ones.
Bits PairsOfChannels(const std::uint8_t* pixels) {
  const Bits pairs =
      _mm256_setr_epi8(0, kNo, 3, kNo, 1, kNo, 4, kNo, 2, kNo, 5, kNo, kNo, kNo, kNo, kNo, 6, kNo,
                       9, kNo, 7, kNo, 10, kNo, 8, kNo, 11, kNo, kNo, kNo, kNo, kNo);
  const Bits ones = _mm256_setr_epi16(0, 0, 0, 0, 0, 0, 1, 1, 0, 0, 0, 0, 0, 0, 1, 1);
  return _mm256_or_si256(_mm256_shuffle_epi8(Twice(pixels), pairs), ones);
}

// Numbers of 16 bits, a pair in each half, beside each pair of channels there.
Bits PairsOfWeights(const std::uint16_t* weights) {
  long long four;
  __builtin_memcpy(&four, weights, sizeof four);
  const Bits pairs = _mm256_setr_epi8(0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3, 4, 5, 6, 7, 4,
                                      5, 6, 7, 4, 5, 6, 7, 4, 5, 6, 7);
  return _mm256_shuffle_epi8(_mm256_set1_epi64x(four), pairs);
}

// Products are taken of numbers with a sign: weights are 32768 less, and what that takes off is
// given back at the end.
class Sums {
 public:
  void Add(Bits weights, Bits numbers) {
    const Bits less = _mm256_xor_si256(weights, _mm256_set1_epi16(-32768));
    products_ = _mm256_add_epi32(products_, _mm256_madd_epi16(less, numbers));
    numbers_ = _mm256_add_epi16(numbers_, numbers);
  }
  // One sum for each pair in a half.
  __m128i Total() const {
    const Bits taken = _mm256_madd_epi16(numbers_, _mm256_set1_epi16(-32768));
    const Bits sums = _mm256_sub_epi32(products_, taken);
    return _mm_add_epi32(_mm256_castsi256_si128(sums), _mm256_extracti128_si256(sums, 1));
  }

 private:
  Bits products_ = _mm256_setzero_si256();
  Bits numbers_ = _mm256_setzero_si256();
};

// Four mask bytes, twice in a row.
struct Masks {
  __m128i bytes;

  explicit Masks(const std::uint8_t* at) {
    int four;
    __builtin_memcpy(&four, at, sizeof four);
    bytes = _mm_cvtsi32_si128(four);
  }
  // All bits where the mask of a number's tap is 255.
  Bits Nothing() const {
    const Bits pairs = _mm256_setr_epi8(0, 0, 1, 1, 0, 0, 1, 1, 0, 0, 1, 1, 0, 0, 1, 1, 2, 2, 3, 3,
                                        2, 2, 3, 3, 2, 2, 3, 3, 2, 2, 3, 3);
    const Bits masks = _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(bytes), pairs);
    return _mm256_cmpeq_epi8(masks, _mm256_set1_epi8(-1));
  }
  // A pair in each half.
  Bits Opacities() const {
    const Bits pairs = _mm256_setr_epi8(0, kNo, 1, kNo, kNo, kNo, kNo, kNo, kNo, kNo, kNo, kNo, kNo,
                                        kNo, kNo, kNo, 2, kNo, 3, kNo, kNo, kNo, kNo, kNo, kNo, kNo,
                                        kNo, kNo, kNo, kNo, kNo, kNo);
    const __m128i opacities = _mm_xor_si128(bytes, _mm_set1_epi8(-1));
    return _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(opacities), pairs);
  }
};

// Whether whole blocks lie in the row with what is read behind them, which is four bytes.
bool HasRoom(const ReductionRun& run, int width) {
  return run.first + (run.taps + kTaps - 1) / kTaps * kTaps + 1 < width;
}

// Calls add(weights, place of the pixels, place of their masks).
template <class Add>
[[gnu::always_inline]] inline void ForBlocks(const ReductionRun& run, const ReductionRows& rows,
                                             bool masked, Add add) {
  const std::uint16_t* weights = rows.weights + run.weights;
  for (int y = 0; y < rows.count; ++y, weights += rows.weightStride) {
    const std::uint8_t* const colour = rows.colour[y] + 3 * static_cast<std::ptrdiff_t>(run.first);
    for (int t = 0; t < run.taps; t += kTaps) {
      add(PairsOfWeights(weights + t), colour + 3 * static_cast<std::ptrdiff_t>(t),
          masked ? rows.mask[y] + run.first + t : nullptr);
    }
  }
}

void Store(ColourSums& to, __m128i sums) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(&to), sums);
}

void SumColoursAvx2(const ReductionRun* runs, int count, int width, const ReductionRows& rows,
                    ColourSums* sums) {
  for (int i = 0; i < count; ++i) {
    if (!HasRoom(runs[i], width)) {
      SumColoursLoop(runs + i, 1, width, rows, sums + i);
      continue;
    }
    Sums sum;
    ForBlocks(runs[i], rows, false,
              [&sum](Bits weights, const std::uint8_t* colour, const std::uint8_t*) {
                sum.Add(weights, PairsOfChannels(colour));
              });
    Store(sums[i], sum.Total());
  }
}

void SumMaskedAvx2(const ReductionRun* runs, int count, int width, const ReductionRows& rows,
                   ColourSums* sums, std::uint32_t* opacities) {
  for (int i = 0; i < count; ++i) {
    if (!HasRoom(runs[i], width)) {
      SumMaskedLoop(runs + i, 1, width, rows, sums + i, opacities + i);
      continue;
    }
    Sums sum;
    Sums opacity;
    ForBlocks(runs[i], rows, true,
              [&](Bits weights, const std::uint8_t* colour, const std::uint8_t* mask) {
                const Masks masks(mask);
                sum.Add(weights, _mm256_andnot_si256(masks.Nothing(), PairsOfChannels(colour)));
                opacity.Add(weights, masks.Opacities());
              });
    Store(sums[i], sum.Total());
    opacities[i] = static_cast<std::uint32_t>(_mm_cvtsi128_si32(opacity.Total()));
  }
}

// Two pixels. A float quotient can be wrong by one, which the remainder tells: sums and weights fit
// 32 and 24 bits. The lowest bit of the dividend, which may have no sign, is no matter there.
Bits DivideTwo(Bits sums) {
  const Bits weight = _mm256_shuffle_epi32(sums, _MM_SHUFFLE(3, 3, 3, 3));
  const Bits dividend = _mm256_add_epi32(sums, _mm256_srli_epi32(weight, 1));
  const __m256 half = _mm256_cvtepi32_ps(_mm256_srli_epi32(dividend, 1));
  const __m256 divisor = _mm256_mul_ps(_mm256_cvtepi32_ps(weight), _mm256_set1_ps(0.5f));
  Bits quotient = _mm256_cvttps_epi32(_mm256_div_ps(half, divisor));
  const Bits rest = _mm256_sub_epi32(dividend, _mm256_mullo_epi32(quotient, weight));
  const Bits last = _mm256_sub_epi32(weight, _mm256_set1_epi32(1));
  quotient = _mm256_add_epi32(quotient, _mm256_srai_epi32(rest, 31));
  quotient = _mm256_sub_epi32(quotient, _mm256_cmpgt_epi32(rest, last));
  return _mm256_andnot_si256(_mm256_cmpeq_epi32(weight, _mm256_setzero_si256()), quotient);
}

void DivideAvx2(std::uint8_t* colour, const ColourSums* sums, int count) {
  const Bits bytes =
      _mm256_setr_epi8(0, 4, 8, kNo, kNo, kNo, kNo, kNo, kNo, kNo, kNo, kNo, kNo, kNo, kNo, kNo,
                       kNo, kNo, kNo, 0, 4, 8, kNo, kNo, kNo, kNo, kNo, kNo, kNo, kNo, kNo, kNo);
  // Eight bytes are written, of which six are the pixels.
  for (; count > 2; count -= 2, sums += 2, colour += 6) {
    const Bits quotients = DivideTwo(Load<Bits>(sums));
    const Bits apart = _mm256_shuffle_epi8(quotients, bytes);
    const __m128i both =
        _mm_or_si128(_mm256_castsi256_si128(apart), _mm256_extracti128_si256(apart, 1));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(colour), both);
  }
  DivideLoop(colour, sums, count);
}

}  // namespace

const ReductionKernels& ReductionKernels::Avx2() {
  static constexpr ReductionKernels kTable = {SumColoursAvx2, SumMaskedAvx2, DivideAvx2,
                                              SharpenLoop, SharpenMaskedLoop};
  return kTable;
}

}  // namespace kernels
