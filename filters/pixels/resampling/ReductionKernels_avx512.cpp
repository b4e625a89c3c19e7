// Reduction kernels for AVX-512 with byte permutes and byte products (VBMI, VNNI).
#include "filters/pixels/resampling/ReductionKernelLoops.h"
#include "filters/pixels/simd/Vectors.h"

namespace kernels {
namespace {

constexpr int kTaps = 16;   // of a block, whose bytes fill a vector channel by channel
constexpr int kOneAt = 48;  // where a 1 stands behind the pixels of a block
static_assert(kWeightBlock == kTaps);

// A quarter for each channel, and one that has the same byte throughout.
constexpr Permutation ByChannel() {
  Permutation p = {};
  for (int i = 0; i < 64; ++i) {
    p.from[i] = static_cast<std::uint8_t>(i < 48 ? 3 * (i % 16) + i / 16 : kOneAt);
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

// One of the four 32-bit numbers of each quarter.
struct alignas(64) OneOfQuarters {
  std::uint32_t from[16];
  operator Bits() const { return _mm512_load_si512(from); }
};
constexpr OneOfQuarters kFirstOfQuarters = {{0, 4, 8, 12}};
constexpr OneOfQuarters kLastOfQuarters = {{3, 7, 11, 15}};

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
  // One sum for each four bytes.
  Bits Total() const { return _mm512_add_epi32(low_, _mm512_maskz_slli_epi32(kAll16, high_, 8)); }
  // One for each quarter of the bytes.
  __m128i ByQuarter() const {
    Bits sum = Total();
    sum = _mm512_add_epi32(sum, _mm512_maskz_shuffle_epi32(kAll16, sum, _MM_PERM_CDAB));
    sum = _mm512_add_epi32(sum, _mm512_maskz_shuffle_epi32(kAll16, sum, _MM_PERM_BADC));
    return _mm512_maskz_extracti32x4_epi32(
        15, _mm512_maskz_permutexvar_epi32(kAll16, kFirstOfQuarters, sum), 0);
  }

 private:
  Bits low_ = _mm512_setzero_si512();
  Bits high_ = _mm512_setzero_si512();
};

// Turns the top bits of all bytes, which takes 128 off.
Bits Signed(Bits bytes) {
  return _mm512_xor_si512(bytes, _mm512_set1_epi8(-128));
}

// What was taken off the channels, given their sums and, as the last one, that of the weights.
__m128i GiveBack(__m128i sums) {
  const __m128i weight = _mm_shuffle_epi32(sums, _MM_SHUFFLE(3, 3, 3, 3));
  return _mm_add_epi32(sums, _mm_maskz_slli_epi32(7, weight, 7));
}

// The same for four pixels.
Bits GiveBackAll(Bits sums) {
  const Bits weights = _mm512_maskz_shuffle_epi32(kAll16, sums, _MM_PERM_DDDD);
  return _mm512_add_epi32(sums, _mm512_maskz_slli_epi32(0x7777, weights, 7));
}

__m128i Load16(const void* at) {
  return _mm_loadu_si128(static_cast<const __m128i*>(at));
}

// --- four pixels at once, a quarter for each

constexpr int kGroup = 4;
constexpr int kGroupTaps = 8;  // of a window, which is what most have
constexpr int kGroupRows = 16;
// Taps whose products come into one sum: a quarter has four of each channel, and four ones.
constexpr int kChunk = 4;
constexpr int kChunks = kGroupTaps / kChunk;
// Pixels that are read of a row for a group, and mask bytes.
constexpr int kPixelsRead = 22;
constexpr int kMasksRead = 32;

// Where the taps of a chunk lie when the windows begin at the same pixel, of a channel or of
// masks.
constexpr Permutation OfTaps(int chunk, bool isMask) {
  Permutation p = {};
  for (int i = 0; i < 64; ++i) {
    const int tap = kChunk * chunk + i % 4;
    const int channel = i % 16 / 4;
    p.from[i] = static_cast<std::uint8_t>(isMask ? tap : channel < 3 ? 3 * tap + channel : 0);
  }
  return p;
}

// One byte of the weights of a chunk, which stand as eight numbers of 16 bits in each quarter.
constexpr Permutation OfWeights(int chunk, int byte) {
  Permutation p = {};
  for (int i = 0; i < 64; ++i) {
    p.from[i] = static_cast<std::uint8_t>(i / 16 * 16 + 2 * (kChunk * chunk + i % 4) + byte);
  }
  return p;
}

constexpr Permutation kColourTaps[kChunks] = {OfTaps(0, false), OfTaps(1, false)};
constexpr Permutation kMaskTaps[kChunks] = {OfTaps(0, true), OfTaps(1, true)};
constexpr Permutation kChunkLow[kChunks] = {OfWeights(0, 0), OfWeights(1, 0)};
constexpr Permutation kChunkHigh[kChunks] = {OfWeights(0, 1), OfWeights(1, 1)};

constexpr __mmask16 kFirstNumbers = 0x1111;  // of the quarters
constexpr __mmask64 kColourBytes = 0x0FFF0FFF0FFF0FFF;
constexpr __mmask64 kFirstFourBytes = 0x000F000F000F000F;

// Four windows side by side.
struct Group {
  Bits runs;       // as they are, but counted from the first one's pixel
  __mmask32 span;  // the pixels under them
  int chunks;
  Bits colours[kChunks], masks[kChunks];  // where their taps lie
  Weights weights[kGroupRows][kChunks];
};

// The groups met last: those with the same weights at the same distances come again and again.
class Groups {
 public:
  Groups(const ReductionRows& rows, int pixelsRead, int width)
      : rows_(rows), lastFirst_(rows.count <= kGroupRows ? width - pixelsRead : -1) {}

  // Null when the runs do not make a group.
  const Group* Of(const ReductionRun* runs) {
    if (runs[0].first > lastFirst_ || runs[0].taps == 0) return nullptr;
    const Bits counted =
        _mm512_mask_sub_epi32(_mm512_loadu_si512(runs), kFirstNumbers, _mm512_loadu_si512(runs),
                              _mm512_set1_epi32(runs[0].first));
    const std::size_t slot = runs[0].weights / kWeightBlock % kSlots;
    Group& group = groups_[slot];
    if (!isFilled_[slot] || _mm512_cmpneq_epi32_mask(counted, group.runs) != 0) {
      if (!Fit(runs)) return nullptr;
      isFilled_[slot] = true;
      group.runs = counted;
      Fill(group, runs);
    }
    return &group;
  }

 private:
  static constexpr int kSlots = 8;

  static bool Fit(const ReductionRun* runs) {
    for (int i = 0; i < kGroup; ++i) {
      const int distance = runs[i].first - runs[0].first;
      if (runs[i].taps < 1 || runs[i].taps > kGroupTaps || distance < 0) return false;
      if (3 * (distance + runs[i].taps) > kVectorBytes) return false;
    }
    return true;
  }

  void Fill(Group& group, const ReductionRun* runs) const {
    int most = 0;
    int end = 0;
    for (int i = 0; i < kGroup; ++i) {
      const int runEnd = runs[i].first + runs[i].taps;
      if (runs[i].taps > most) most = runs[i].taps;
      if (runEnd > end) end = runEnd;
    }
    group.chunks = most > kChunk ? kChunks : 1;
    group.span = static_cast<__mmask32>(FirstBytes(end - runs[0].first));
    // The distance, in all bytes of the quarter.
    const Bits distances = _mm512_mullo_epi32(
        _mm512_maskz_shuffle_epi32(kAll16, group.runs, _MM_PERM_AAAA), _mm512_set1_epi32(0x010101));
    const Bits everywhere =
        _mm512_or_si512(distances, _mm512_maskz_slli_epi32(kAll16, distances, 8));
    for (int c = 0; c < group.chunks; ++c) {
      group.masks[c] = _mm512_add_epi8(everywhere, kMaskTaps[c]);
      const Bits twice = _mm512_add_epi8(everywhere, everywhere);
      group.colours[c] = _mm512_add_epi8(_mm512_add_epi8(twice, everywhere), kColourTaps[c]);
    }
    const std::uint16_t* row = rows_.weights;
    for (int y = 0; y < rows_.count; ++y, row += rows_.weightStride) {
      Bits all = _mm512_zextsi128_si512(Load16(row + runs[0].weights));
      all = _mm512_maskz_inserti32x4(kAll16, all, Load16(row + runs[1].weights), 1);
      all = _mm512_maskz_inserti32x4(kAll16, all, Load16(row + runs[2].weights), 2);
      all = _mm512_maskz_inserti32x4(kAll16, all, Load16(row + runs[3].weights), 3);
      for (int c = 0; c < group.chunks; ++c) {
        group.weights[y][c].low = Permute(kChunkLow[c], all);
        group.weights[y][c].high = Permute(kChunkHigh[c], all);
      }
    }
  }

  const ReductionRows& rows_;
  const int lastFirst_;  // behind it, a group would be read beyond the row's end
  bool isFilled_[kSlots] = {};
  Group groups_[kSlots];
};

// The channels of a chunk's taps, 128 off, and ones.
Bits ColourTaps(const Group& group, int chunk, Bits colours) {
  return _mm512_mask_permutexvar_epi8(_mm512_set1_epi8(1), kColourBytes, group.colours[chunk],
                                      colours);
}

template <int kGroupChunks>
Bits SumGroup(const Group& group, const ReductionRows& rows, std::ptrdiff_t first) {
  Sums sum;
  for (int y = 0; y < rows.count; ++y) {
    const Bits colours = Signed(_mm512_loadu_si512(rows.colour[y] + 3 * first));
    for (int c = 0; c < kGroupChunks; ++c) {
      sum.Add(group.weights[y][c], ColourTaps(group, c, colours));
    }
  }
  return GiveBackAll(sum.Total());
}

// Opacities come into the first sums of a second vector, 128 off, and ones into the second ones.
template <int kGroupChunks>
Bits SumMaskedGroup(const Group& group, const ReductionRows& rows, std::ptrdiff_t first,
                    std::uint32_t* opacities) {
  const Bits ones = _mm512_set1_epi8(1);
  Sums sum;
  Sums opacitySum;
  for (int y = 0; y < rows.count; ++y) {
    const Bits colours = Signed(_mm512_loadu_si512(rows.colour[y] + 3 * first));
    const Bits masks = _mm512_castsi256_si512(
        _mm256_loadu_si256(reinterpret_cast<const __m256i*>(rows.mask[y] + first)));
    for (int c = 0; c < kGroupChunks; ++c) {
      const Bits mask = _mm512_maskz_permutexvar_epi8(kAll64, group.masks[c], masks);
      const __mmask64 counts = _mm512_cmpneq_epi8_mask(mask, _mm512_set1_epi8(-1));
      sum.Add(group.weights[y][c], _mm512_maskz_mov_epi8(counts, ColourTaps(group, c, colours)));
      const Bits opacity = _mm512_xor_si512(mask, _mm512_set1_epi8(127));
      opacitySum.Add(group.weights[y][c], _mm512_mask_mov_epi8(ones, kFirstFourBytes, opacity));
    }
  }
  const Bits total = opacitySum.Total();
  const Bits taken =
      _mm512_maskz_slli_epi32(kAll16, _mm512_maskz_shuffle_epi32(kAll16, total, _MM_PERM_BBBB), 7);
  const Bits given =
      _mm512_maskz_permutexvar_epi32(kAll16, kFirstOfQuarters, _mm512_add_epi32(total, taken));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(opacities), Quarter<0>(given));
  return GiveBackAll(sum.Total());
}

// Whether all mask bytes under a group are the same, as they mostly are.
bool HasOneMask(const Group& group, const ReductionRows& rows, std::ptrdiff_t first) {
  const __m256i one = _mm256_set1_epi8(static_cast<char>(rows.mask[0][first]));
  __m256i other = _mm256_setzero_si256();
  for (int y = 0; y < rows.count; ++y) {
    const __m256i masks =
        _mm256_loadu_si256(reinterpret_cast<const __m256i*>(rows.mask[y] + first));
    other = _mm256_or_si256(other, _mm256_xor_si256(masks, one));
  }
  return _mm256_mask_test_epi8_mask(group.span, other, other) == 0;
}

template <int kGroupChunks>
Bits SumGroupOfOneMask(const Group& group, const ReductionRows& rows, std::ptrdiff_t first,
                       std::uint32_t* opacities) {
  const int opacity = 255 - rows.mask[0][first];
  const Bits sums =
      opacity == 0 ? _mm512_setzero_si512() : SumGroup<kGroupChunks>(group, rows, first);
  const Bits weights = _mm512_maskz_permutexvar_epi32(kAll16, kLastOfQuarters, sums);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(opacities),
                   _mm_mullo_epi32(Quarter<0>(weights), _mm_set1_epi32(opacity)));
  return sums;
}

template <int kGroupChunks>
Bits SumAnyGroup(const Group& group, const ReductionRows& rows, std::ptrdiff_t first,
                 std::uint32_t* opacities) {
  if (rows.count > 0 && HasOneMask(group, rows, first)) {
    return SumGroupOfOneMask<kGroupChunks>(group, rows, first, opacities);
  }
  return SumMaskedGroup<kGroupChunks>(group, rows, first, opacities);
}

// --- one pixel

// Calls add(weights, colours, mask bytes) for each block of taps in each row.
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
      add(Weights(_mm512_maskz_loadu_epi16(0xFFFF, weights + t)),
          _mm512_mask_mov_epi8(Signed(colours), __mmask64{1} << kOneAt, _mm512_set1_epi8(1)), mask);
    }
  }
}

void Store(ColourSums& to, __m128i sums) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(&to), sums);
}

void SumPixel(const ReductionRun& run, const ReductionRows& rows, ColourSums& to) {
  Sums sum;
  ForBlocks<false>(run, rows, [&sum](const Weights& weights, Bits colours, __m128i) {
    sum.Add(weights, Permute(kByChannel, colours));
  });
  Store(to, GiveBack(sum.ByQuarter()));
}

// The last quarter sums the weights of the taps whose colours count. A vector beside it has the
// opacities, taken 128 off, and ones.
void SumMaskedPixel(const ReductionRun& run, const ReductionRows& rows, ColourSums& to,
                    std::uint32_t& opacity) {
  const Bits ones = _mm512_set1_epi8(1);
  Sums sum;
  Sums opacitySum;
  ForBlocks<true>(run, rows, [&](const Weights& weights, Bits colours, __m128i mask) {
    const __mmask16 counts = _mm_cmpneq_epi8_mask(mask, _mm_set1_epi8(-1));
    const __mmask64 inAllQuarters = __mmask64{counts} * 0x0001000100010001;
    sum.Add(weights, _mm512_maskz_permutexvar_epi8(inAllQuarters, kByChannel, colours));
    const __m128i opacities = _mm_xor_si128(mask, _mm_set1_epi8(127));
    opacitySum.Add(weights, _mm512_mask_broadcast_i32x4(ones, 15, opacities));
  });
  Store(to, GiveBack(sum.ByQuarter()));
  const __m128i total = opacitySum.ByQuarter();
  opacity = static_cast<std::uint32_t>(_mm_extract_epi32(total, 0)) +
            (static_cast<std::uint32_t>(_mm_extract_epi32(total, 1)) << 7);
}

// --- rows

// Asks for what a group at the same place will read in the rows that come next.
template <bool kMasked>
[[gnu::always_inline]] inline void AnnounceAhead(const ReductionRows& rows, std::ptrdiff_t first) {
  for (int y = rows.count; y < rows.count + rows.ahead; ++y) {
    __builtin_prefetch(rows.colour[y] + 3 * first);
    if (kMasked) __builtin_prefetch(rows.mask[y] + first);
  }
}

void SumColoursAvx512(const ReductionRun* runs, int count, int width, const ReductionRows& rows,
                      ColourSums* sums) {
  Groups groups(rows, kPixelsRead, width);
  for (int i = 0; i < count;) {
    const Group* const group = i + kGroup <= count ? groups.Of(runs + i) : nullptr;
    if (!group) {
      SumPixel(runs[i], rows, sums[i]);
      ++i;
      continue;
    }
    const std::ptrdiff_t first = runs[i].first;
    AnnounceAhead<false>(rows, first);
    _mm512_storeu_si512(sums + i, group->chunks == 1 ? SumGroup<1>(*group, rows, first)
                                                     : SumGroup<kChunks>(*group, rows, first));
    i += kGroup;
  }
}

void SumMaskedAvx512(const ReductionRun* runs, int count, int width, const ReductionRows& rows,
                     ColourSums* sums, std::uint32_t* opacities) {
  Groups groups(rows, kMasksRead, width);
  for (int i = 0; i < count;) {
    const Group* const group = i + kGroup <= count ? groups.Of(runs + i) : nullptr;
    if (!group) {
      SumMaskedPixel(runs[i], rows, sums[i], opacities[i]);
      ++i;
      continue;
    }
    const std::ptrdiff_t first = runs[i].first;
    AnnounceAhead<true>(rows, first);
    _mm512_storeu_si512(sums + i, group->chunks == 1
                                      ? SumAnyGroup<1>(*group, rows, first, opacities + i)
                                      : SumAnyGroup<kChunks>(*group, rows, first, opacities + i));
    i += kGroup;
  }
}

// Four pixels. A float quotient can be wrong by one, which the remainder tells: sums and weights
// fit 32 and 24 bits, and a quotient 8.
__m128i DivideFour(Bits sums) {
  const Bits weight = _mm512_maskz_shuffle_epi32(kAll16, sums, _MM_PERM_DDDD);
  const Bits dividend = _mm512_add_epi32(sums, _mm512_maskz_srli_epi32(kAll16, weight, 1));
  const __mmask16 counts = _mm512_test_epi32_mask(weight, weight);
  const __m512 divisor = _mm512_maskz_cvtepu32_ps(kAll16, weight);
  const __m512 about = _mm512_maskz_rcp14_ps(counts, divisor);
  // One step of Newton's method: right but for the last bits, and quicker than a division.
  const __m512 inverse =
      _mm512_mul_ps(about, _mm512_fnmadd_ps(about, divisor, _mm512_set1_ps(2.0f)));
  const __m512 ratio = _mm512_mul_ps(_mm512_maskz_cvtepu32_ps(kAll16, dividend), inverse);
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

// Sixteen bytes are written, of which twelve are the pixels.
void DivideAvx512(std::uint8_t* colour, const ColourSums* sums, int count) {
  for (; count > 5; count -= 4, sums += 4, colour += 12) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(colour), DivideFour(_mm512_loadu_si512(sums)));
  }
  DivideLoop(colour, sums, count);
}

}  // namespace

const ReductionKernels& ReductionKernels::Avx512() {
  static constexpr ReductionKernels kTable = {SumColoursAvx512, SumMaskedAvx512, DivideAvx512,
                                              SharpenLoop, SharpenMaskedLoop};
  return kTable;
}

}  // namespace kernels
