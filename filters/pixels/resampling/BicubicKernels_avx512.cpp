// Bicubic kernels for AVX-512 with byte permutes and byte products (VBMI, VNNI).
#include "filters/pixels/resampling/BicubicKernelLoops.h"
#include "filters/pixels/simd/Vectors.h"

// Vectors of sums hold four pixels, a quarter each: three channels, and in the last place nothing
// or the opacity.
namespace kernels {
namespace {

constexpr int kPixels = 16;  // of a block
constexpr std::size_t kBytes = 64;

// For a shuffle, which makes a byte 0 where the place has its top bit set: pairs of 16-bit numbers,
// the same channel of a quarter's first two pixels, or of its last two in
// every other quarter. Pixels have `step` bytes, a channel has `bytes`.
constexpr Permutation PairOrder(int step, int bytes, int lastTwo) {
  Permutation order = {};
  for (int i = 0; i < 64; ++i) {
    const int pixel = i / 2 % 2, channel = i / 4 % 4, byte = i % 2;
    const int at = i / 16 % 2 * lastTwo + pixel * step + channel * bytes + byte;
    order.from[i] = static_cast<std::uint8_t>(byte < bytes ? at : 0x80);
  }
  return order;
}
constexpr Permutation kBytePairs = PairOrder(3, 1, 6);
constexpr Permutation kWordPairs = PairOrder(8, 2, 0);

// Three of four bytes, then the fourth ones.
constexpr Permutation SplitOrder() {
  Permutation order = {};
  for (int i = 0; i < 64; ++i) {
    order.from[i] = static_cast<std::uint8_t>(i < 48 ? i / 3 * 4 + i % 3 : (i - 48) * 4 + 3);
  }
  return order;
}
constexpr Permutation kSplit = SplitOrder();

Bits LoadHalves(const void* low, const void* high) {
  const Bits first = _mm512_castsi256_si512(_mm256_loadu_si256(static_cast<const __m256i*>(low)));
  return _mm512_maskz_inserti64x4(kAll8, first,
                                  _mm256_loadu_si256(static_cast<const __m256i*>(high)), 1);
}

// Either number twice.
Bits LoadQuarters(const void* low, const void* high) {
  const auto twice = [](const void* from) {
    return _mm256_broadcastsi128_si256(_mm_loadu_si128(static_cast<const __m128i*>(from)));
  };
  return _mm512_maskz_inserti64x4(kAll8, _mm512_castsi256_si512(twice(low)), twice(high), 1);
}

template <int kShift>
Bits ShiftLeft(Bits numbers) {
  return _mm512_maskz_slli_epi32(kAll16, numbers, kShift);
}

// Products of both halves of either vector's halves, summed.
Bits SumHalves(Bits first, Bits second) {
  return _mm512_add_epi32(_mm512_maskz_shuffle_i64x2(kAll8, first, second, 0x88),
                          _mm512_maskz_shuffle_i64x2(kAll8, first, second, 0xDD));
}

// The phases of the pixels of a vector of sums.
struct Phases {
  const BicubicWeights* pixel[4];

  // Of every `step`th tap.
  Phases(const BicubicWeights* phases, const BicubicTap* taps, int step)
      : pixel{phases + taps[0].phase, phases + taps[step].phase, phases + taps[2 * step].phase,
              phases + taps[3 * step].phase} {}

  Bits Pairs01() const { return LoadHalves(pixel[0]->pairs, pixel[1]->pairs); }
  Bits Pairs23() const { return LoadHalves(pixel[2]->pairs, pixel[3]->pairs); }
  Bits Sums() const {
    Bits sums = _mm512_set1_epi32(pixel[0]->sum);
    sums = _mm512_mask_set1_epi32(sums, 0x00F0, pixel[1]->sum);
    sums = _mm512_mask_set1_epi32(sums, 0x0F00, pixel[2]->sum);
    return _mm512_mask_set1_epi32(sums, 0xF000, pixel[3]->sum);
  }
  __m512 Reciprocals() const {
    const auto broadcast = [](__m512 to, __mmask16 quarter, float number) {
      return _mm512_mask_broadcastss_ps(to, quarter, _mm_set_ss(number));
    };
    __m512 all = _mm512_set1_ps(pixel[0]->reciprocal);
    all = broadcast(all, 0x00F0, pixel[1]->reciprocal);
    all = broadcast(all, 0x0F00, pixel[2]->reciprocal);
    return broadcast(all, 0xF000, pixel[3]->reciprocal);
  }
};

Bits OpaqueQuotients(Bits sums, __m512 reciprocals) {
  const __m512 quotients = _mm512_fmadd_ps(_mm512_maskz_cvtepi32_ps(kAll16, sums), reciprocals,
                                           _mm512_set1_ps(kRoundingHalf));
  return _mm512_maskz_cvttps_epi32(kAll16, quotients);
}

// Divides the sums of weighed channels by the quarter's sum of opacities, and that by the weights'
// sum. The first quotient is right or 1 below, which the remainder tells. At most 256, never
// negative.
Bits MaskedQuotients(Bits sums, Bits weightSums) {
  constexpr __mmask16 kColours = 0x7777;
  const Bits one = _mm512_set1_epi32(1);
  const Bits opacity = _mm512_maskz_shuffle_epi32(kAll16, sums, _MM_PERM_DDDD);
  const Bits size = _mm512_maskz_abs_epi32(kAll16, opacity);
  const Bits divisor = _mm512_mask_max_epi32(weightSums, kColours, size, one);
  const __mmask16 negative =
      _mm512_mask_cmplt_epi32_mask(kColours, opacity, _mm512_setzero_si512());
  const Bits turned = _mm512_mask_sub_epi32(sums, negative, _mm512_setzero_si512(), sums);
  const Bits dividend = _mm512_add_epi32(turned, _mm512_maskz_srli_epi32(kAll16, divisor, 1));
  const __m512 by = _mm512_maskz_cvtepi32_ps(kAll16, divisor);
  const __m512 rough = _mm512_maskz_rcp14_ps(kAll16, by);
  const __m512 reciprocal =
      _mm512_mul_ps(rough, _mm512_fnmadd_ps(by, rough, _mm512_set1_ps(kTwoAndLess)));
  const __m512 ratio = _mm512_mul_ps(_mm512_maskz_cvtepi32_ps(kAll16, dividend), reciprocal);
  const __m512 limited = _mm512_maskz_min_ps(
      kAll16, _mm512_maskz_max_ps(kAll16, ratio, _mm512_setzero_ps()), _mm512_set1_ps(255));
  const Bits quotient = _mm512_maskz_cvttps_epi32(kAll16, limited);
  const Bits rest = _mm512_sub_epi32(dividend, _mm512_mullo_epi32(quotient, divisor));
  return _mm512_mask_add_epi32(quotient, _mm512_cmpge_epi32_mask(rest, divisor), quotient, one);
}

Bits PackNumbers(Bits low, Bits high) {
  return _mm512_maskz_packs_epi32(kAll32, low, high);
}

Bits PackBytes(Bits low, Bits high) {
  return _mm512_maskz_packus_epi16(kAll64, low, high);
}

// Every fourth pixel of sixteen.
Bits StretchFour(const std::uint8_t* from, const BicubicTap* taps, const BicubicWeights* phases) {
  const auto at = [&](int pixel) {
    return from + 3 * (static_cast<std::ptrdiff_t>(taps[4 * pixel].index) - 1);
  };
  const Phases by(phases, taps, 4);
  const auto weigh = [](Bits bytes, Bits pairs) {
    const Bits ordered = _mm512_maskz_shuffle_epi8(kAll64, bytes, kBytePairs);
    return _mm512_maskz_madd_epi16(kAll16, ordered, pairs);
  };
  const Bits sums = SumHalves(weigh(LoadQuarters(at(0), at(1)), by.Pairs01()),
                              weigh(LoadQuarters(at(2), at(3)), by.Pairs23()));
  return OpaqueQuotients(sums, by.Reciprocals());
}

void Stretch(std::uint8_t* to, const std::uint8_t* from, const BicubicTap* taps, int count) {
  const BicubicWeights* const phases = BicubicPhases();
  for (; count >= kPixels; count -= kPixels, taps += kPixels, to += 3 * kPixels) {
    const auto four = [&](int first) { return StretchFour(from, taps + first, phases); };
    const Bits bytes = PackBytes(PackNumbers(four(0), four(1)), PackNumbers(four(2), four(3)));
    _mm512_mask_storeu_epi8(to, FirstBytes(48),
                            _mm512_maskz_permutexvar_epi8(kAll64, kSplit, bytes));
  }
  StretchLoop(to, from, taps, count);
}

// The weights' bits from the seventh on and those below, as products take signed bytes; once for
// each of four rows.
struct SplitWeights {
  Bits high, low;

  explicit SplitWeights(const std::int32_t (&weights)[4]) {
    std::uint32_t highs = 0, lows = 0;
    for (int t = 0; t < 4; ++t) {
      highs |= (static_cast<std::uint32_t>(weights[t] >> 7) & 0xFF) << 8 * t;
      lows |= (static_cast<std::uint32_t>(weights[t]) & 0x7F) << 8 * t;
    }
    high = _mm512_set1_epi32(static_cast<int>(highs));
    low = _mm512_set1_epi32(static_cast<int>(lows));
  }

  // Of the four bytes of each number.
  Bits Sum(Bits bytes) const {
    const Bits sum = _mm512_dpbusd_epi32(_mm512_setzero_si512(), bytes, high);
    return _mm512_dpbusd_epi32(ShiftLeft<7>(sum), bytes, low);
  }
};

void Blend(std::uint8_t* to, const std::uint8_t* const (&rows)[4], std::size_t bytes,
           const BicubicWeights& weights) {
  const SplitWeights split(weights.weight);
  const __m512 reciprocals = _mm512_set1_ps(weights.reciprocal);
  std::size_t i = 0;
  for (; i + kBytes <= bytes; i += kBytes) {
    const Bits row0 = Load<Bits>(rows[0] + i), row1 = Load<Bits>(rows[1] + i);
    const Bits row2 = Load<Bits>(rows[2] + i), row3 = Load<Bits>(rows[3] + i);
    const auto half = [&](Bits pairs01, Bits pairs23) {
      const Bits low = _mm512_maskz_unpacklo_epi16(kAll32, pairs01, pairs23);
      const Bits high = _mm512_maskz_unpackhi_epi16(kAll32, pairs01, pairs23);
      return PackNumbers(OpaqueQuotients(split.Sum(low), reciprocals),
                         OpaqueQuotients(split.Sum(high), reciprocals));
    };
    const Bits low = half(_mm512_maskz_unpacklo_epi8(kAll64, row0, row1),
                          _mm512_maskz_unpacklo_epi8(kAll64, row2, row3));
    const Bits high = half(_mm512_maskz_unpackhi_epi8(kAll64, row0, row1),
                           _mm512_maskz_unpackhi_epi8(kAll64, row2, row3));
    Store(to + i, PackBytes(low, high));
  }
  const std::uint8_t* const rest[4] = {rows[0] + i, rows[1] + i, rows[2] + i, rows[3] + i};
  BlendLoop(to + i, rest, bytes - i, weights);
}

// Products take signed numbers: 32768 is taken off, and its share added to the sums.
Bits Signed(Bits words) {
  return _mm512_xor_si512(words, _mm512_set1_epi16(-0x8000));
}

Bits MaskedQuotientsOfSigned(Bits sums, Bits weightSums) {
  return MaskedQuotients(_mm512_add_epi32(sums, ShiftLeft<15>(weightSums)), weightSums);
}

// Every other pixel of eight.
Bits StretchFour(const WeighedPixel* from, const BicubicTap* taps, const BicubicWeights* phases) {
  const auto at = [&](int pixel) { return from + taps[2 * pixel].index - 1; };
  const Phases by(phases, taps, 2);
  const auto weigh = [](Bits words, Bits pairs) {
    const Bits ordered = _mm512_maskz_shuffle_epi8(kAll64, Signed(words), kWordPairs);
    return _mm512_maskz_madd_epi16(kAll16, ordered, pairs);
  };
  const Bits sums = SumHalves(weigh(LoadHalves(at(0), at(1)), by.Pairs01()),
                              weigh(LoadHalves(at(2), at(3)), by.Pairs23()));
  return MaskedQuotientsOfSigned(sums, by.Sums());
}

void StretchMasked(WeighedPixel* to, const WeighedPixel* from, const BicubicTap* taps, int count) {
  constexpr __mmask32 kOpacities = 0x88888888;
  const BicubicWeights* const phases = BicubicPhases();
  for (; count >= 8; count -= 8, taps += 8, to += 8) {
    const Bits words = _mm512_maskz_min_epi16(
        kAll32, PackNumbers(StretchFour(from, taps, phases), StretchFour(from, taps + 1, phases)),
        _mm512_set1_epi16(255));
    const Bits opacities = _mm512_maskz_shufflehi_epi16(
        kAll32, _mm512_maskz_shufflelo_epi16(kAll32, words, 0xFF), 0xFF);
    Store(to, _mm512_mask_mullo_epi16(words, ~kOpacities, words, opacities));
  }
  StretchMaskedLoop(to, from, taps, count);
}

void BlendMasked(std::uint8_t* colour, std::uint8_t* mask, const WeighedPixel* const (&rows)[4],
                 int width, const BicubicWeights& weights) {
  const auto pair = [&](int first) {
    return _mm512_set1_epi32((weights.weight[first] & 0xFFFF) | weights.weight[first + 1] << 16);
  };
  const Bits pair01 = pair(0), pair23 = pair(2);
  const Bits weightSums = _mm512_set1_epi32(weights.sum);
  const auto eight = [&](int x) {
    const Bits row0 = Signed(Load<Bits>(rows[0] + x)), row1 = Signed(Load<Bits>(rows[1] + x));
    const Bits row2 = Signed(Load<Bits>(rows[2] + x)), row3 = Signed(Load<Bits>(rows[3] + x));
    const auto weigh = [&](Bits words01, Bits words23) {
      return MaskedQuotientsOfSigned(
          _mm512_add_epi32(_mm512_maskz_madd_epi16(kAll16, words01, pair01),
                           _mm512_maskz_madd_epi16(kAll16, words23, pair23)),
          weightSums);
    };
    return PackNumbers(weigh(_mm512_maskz_unpacklo_epi16(kAll32, row0, row1),
                             _mm512_maskz_unpacklo_epi16(kAll32, row2, row3)),
                       weigh(_mm512_maskz_unpackhi_epi16(kAll32, row0, row1),
                             _mm512_maskz_unpackhi_epi16(kAll32, row2, row3)));
  };
  int x = 0;
  for (; x + kPixels <= width; x += kPixels) {
    const Bits inHalves = _mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7);
    const Bits bytes =
        _mm512_maskz_permutexvar_epi64(kAll8, inHalves, PackBytes(eight(x), eight(x + 8)));
    const Bits split = _mm512_maskz_permutexvar_epi8(kAll64, kSplit, bytes);
    _mm512_mask_storeu_epi8(colour + 3 * x, FirstBytes(48), split);
    const __m128i opacities = Quarter<3>(split);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(mask + x),
                     _mm_xor_si128(opacities, _mm_set1_epi8(-1)));
  }
  const WeighedPixel* const rest[4] = {rows[0] + x, rows[1] + x, rows[2] + x, rows[3] + x};
  BlendMaskedLoop(colour + 3 * x, mask + x, rest, width - x, weights);
}

}  // namespace

const BicubicKernels& BicubicKernels::Avx512() {
  static constexpr BicubicKernels kTable = {Stretch, Blend, WeighLoop, StretchMasked, BlendMasked};
  return kTable;
}

}  // namespace kernels
