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

// --- windows of up to eight taps, which most are

constexpr int kBlocks = 2;
constexpr int kNarrow = kBlocks * kTaps;
constexpr int kKeptRows = 16;

struct Window {
  std::size_t place = 0;  // of the weights
  int taps = 0;           // none: not filled
  std::uint32_t weight = 0;
  Bits weights[kKeptRows][kBlocks];  // 32768 less, in pairs

  int Blocks() const { return taps > kTaps ? kBlocks : 1; }
};

// The windows met last: windows with the same weights come again and again.
class Windows {
 public:
  Windows(const ReductionRows& rows, int width)
      : rows_(rows), lastFirst_(rows.count <= kKeptRows ? width - kNarrow - 2 : -1) {}

  // Null for what is too wide, or too near to the row's end for whole blocks.
  const Window* Of(const ReductionRun& run) {
    if (run.first > lastFirst_ || run.taps > kNarrow || run.taps < 1) return nullptr;
    Window& window = windows_[run.weights / kWeightBlock % kSlots];
    if (window.place != run.weights || window.taps != run.taps) Fill(window, run);
    return &window;
  }

 private:
  static constexpr int kSlots = 16;

  void Fill(Window& window, const ReductionRun& run) const {
    window.place = run.weights;
    window.taps = run.taps;
    const Bits half = _mm256_set1_epi16(-32768);
    Bits sum = _mm256_setzero_si256();
    const std::uint16_t* row = rows_.weights + run.weights;
    for (int y = 0; y < rows_.count; ++y, row += rows_.weightStride) {
      for (int block = 0; block < window.Blocks(); ++block) {
        const Bits less = _mm256_xor_si256(PairsOfWeights(row + kTaps * block), half);
        window.weights[y][block] = less;
        sum = _mm256_add_epi32(sum, _mm256_madd_epi16(less, _mm256_set1_epi16(1)));
      }
    }
    const __m128i both =
        _mm_add_epi32(_mm256_castsi256_si128(sum), _mm256_extracti128_si256(sum, 1));
    const int taken = 32768 * kTaps * window.Blocks() * rows_.count;
    window.weight = static_cast<std::uint32_t>(_mm_cvtsi128_si32(both) + taken);
  }

  const ReductionRows& rows_;
  const int lastFirst_;
  Window windows_[kSlots];
};

template <int kWindowBlocks>
__m128i SumBlocks(const Window& window, int first, const ReductionRows& rows) {
  const Bits pairs =
      _mm256_setr_epi8(0, kNo, 3, kNo, 1, kNo, 4, kNo, 2, kNo, 5, kNo, kNo, kNo, kNo, kNo, 6, kNo,
                       9, kNo, 7, kNo, 10, kNo, 8, kNo, 11, kNo, kNo, kNo, kNo, kNo);
  Bits products = _mm256_setzero_si256();
  Bits numbers = products;
  for (int y = 0; y < rows.count; ++y) {
    const std::uint8_t* const colour = rows.colour[y] + 3 * static_cast<std::ptrdiff_t>(first);
    for (int block = 0; block < kWindowBlocks; ++block) {
      const Bits channels = _mm256_shuffle_epi8(Twice(colour + 3 * kTaps * block), pairs);
      products = _mm256_add_epi32(products, _mm256_madd_epi16(window.weights[y][block], channels));
      numbers = _mm256_add_epi16(numbers, channels);
    }
  }
  const Bits sums =
      _mm256_sub_epi32(products, _mm256_madd_epi16(numbers, _mm256_set1_epi16(-32768)));
  const __m128i both =
      _mm_add_epi32(_mm256_castsi256_si128(sums), _mm256_extracti128_si256(sums, 1));
  return _mm_insert_epi32(both, static_cast<int>(window.weight), 3);
}

__m128i SumWindow(const Window& window, int first, const ReductionRows& rows) {
  return window.Blocks() == 1 ? SumBlocks<1>(window, first, rows)
                              : SumBlocks<kBlocks>(window, first, rows);
}

// Whether all mask bytes under a run are the same, as they mostly are.
bool HasOneMask(const ReductionRun& run, const ReductionRows& rows) {
  const auto eightAt = [&run](const std::uint8_t* row) {
    std::uint64_t eight;
    __builtin_memcpy(&eight, row + run.first, sizeof eight);
    return eight;
  };
  const std::uint64_t one = rows.mask[0][run.first] * 0x0101010101010101u;
  std::uint64_t other = 0;
  for (int y = 0; y < rows.count; ++y) other |= eightAt(rows.mask[y]) ^ one;
  return other << (64 - 8 * run.taps) == 0;
}

// --- rows

void SumColoursAvx2(const ReductionRun* runs, int count, int width, const ReductionRows& rows,
                    ColourSums* sums) {
  Windows windows(rows, width);
  for (int i = 0; i < count; ++i) {
    if (const Window* const window = windows.Of(runs[i])) {
      Store(sums[i], SumWindow(*window, runs[i].first, rows));
    } else if (HasRoom(runs[i], width)) {
      Sums sum;
      ForBlocks(runs[i], rows, false,
                [&sum](Bits weights, const std::uint8_t* colour, const std::uint8_t*) {
                  sum.Add(weights, PairsOfChannels(colour));
                });
      Store(sums[i], sum.Total());
    } else {
      SumColoursLoop(runs + i, 1, width, rows, sums + i);
    }
  }
}

void SumMasks(const ReductionRun& run, const ReductionRows& rows, ColourSums& to,
              std::uint32_t& opacityTo) {
  Sums sum;
  Sums opacity;
  ForBlocks(run, rows, true,
            [&](Bits weights, const std::uint8_t* colour, const std::uint8_t* mask) {
              const Masks masks(mask);
              sum.Add(weights, _mm256_andnot_si256(masks.Nothing(), PairsOfChannels(colour)));
              opacity.Add(weights, masks.Opacities());
            });
  Store(to, sum.Total());
  opacityTo = static_cast<std::uint32_t>(_mm_cvtsi128_si32(opacity.Total()));
}

void SumMaskedAvx2(const ReductionRun* runs, int count, int width, const ReductionRows& rows,
                   ColourSums* sums, std::uint32_t* opacities) {
  Windows windows(rows, width);
  for (int i = 0; i < count; ++i) {
    const Window* const window = rows.count > 0 ? windows.Of(runs[i]) : nullptr;
    if (window && HasOneMask(runs[i], rows)) {
      const std::uint32_t opacity = 255u - rows.mask[0][runs[i].first];
      Store(sums[i], opacity == 0 ? _mm_setzero_si128() : SumWindow(*window, runs[i].first, rows));
      opacities[i] = opacity * window->weight;
    } else if (HasRoom(runs[i], width)) {
      SumMasks(runs[i], rows, sums[i], opacities[i]);
    } else {
      SumMaskedLoop(runs + i, 1, width, rows, sums + i, opacities + i);
    }
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
