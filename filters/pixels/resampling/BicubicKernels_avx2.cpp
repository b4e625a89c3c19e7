// Bicubic kernels for AVX2.
#include "filters/pixels/resampling/BicubicKernelLoops.h"
#include "filters/pixels/simd/Vectors.h"

// Vectors of sums hold two pixels, a half each: three channels, and in the last place nothing or
// the opacity.
namespace kernels {
namespace {

constexpr int kPixels = 8;  // of a block
constexpr std::size_t kBytes = 32;

// Which byte of its half each byte of a shuffled vector comes from; above 127 it is 0.
struct alignas(32) Order {
  std::uint8_t from[32];
  operator Bits() const { return _mm256_load_si256(reinterpret_cast<const Bits*>(from)); }
};

// Pairs of 16-bit numbers: the same channel of the first two pixels, or in the upper half of the
// last two. Pixels have `step` bytes, a channel has `bytes`.
constexpr Order PairOrder(int step, int bytes, int lastTwo) {
  Order order = {};
  for (int i = 0; i < 32; ++i) {
    const int pixel = i / 2 % 2, channel = i / 4 % 4, byte = i % 2;
    const int at = i / 16 * lastTwo + pixel * step + channel * bytes + byte;
    order.from[i] = static_cast<std::uint8_t>(byte < bytes ? at : 0x80);
  }
  return order;
}
constexpr Order kBytePairs = PairOrder(3, 1, 6);
constexpr Order kWordPairs = PairOrder(8, 2, 0);

// Three of four bytes, then the fourth ones.
constexpr Order SplitOrder() {
  Order order = {};
  for (int i = 0; i < 32; ++i) {
    const int at = i % 16;
    order.from[i] = static_cast<std::uint8_t>(at < 12 ? at / 3 * 4 + at % 3 : (at - 12) * 4 + 3);
  }
  return order;
}
constexpr Order kSplit = SplitOrder();

Bits LoadTwice(const void* half) {
  return _mm256_broadcastsi128_si256(_mm_loadu_si128(static_cast<const __m128i*>(half)));
}

Bits Halves(const BicubicWeights& low, const BicubicWeights& high) {
  return _mm256_set_m128i(_mm_set1_epi32(high.sum), _mm_set1_epi32(low.sum));
}

// Both halves of either vector, summed.
Bits SumHalves(Bits first, Bits second) {
  return _mm256_add_epi32(_mm256_permute2x128_si256(first, second, 0x20),
                          _mm256_permute2x128_si256(first, second, 0x31));
}

Bits OpaqueQuotients(Bits sums, __m256 reciprocals) {
  return _mm256_cvttps_epi32(
      _mm256_fmadd_ps(_mm256_cvtepi32_ps(sums), reciprocals, _mm256_set1_ps(kRoundingHalf)));
}

// Divides the sums of weighed channels by the half's sum of opacities, and that by the weights'
// sum. The first quotient is right or 1 below, which the remainder tells. At most 256, never
// negative.
Bits MaskedQuotients(Bits sums, Bits weightSums) {
  constexpr int kOpacities = 0x88;
  const Bits one = _mm256_set1_epi32(1);
  const Bits opacity = _mm256_shuffle_epi32(sums, 0xFF);
  const Bits divisor =
      _mm256_blend_epi32(_mm256_max_epi32(_mm256_abs_epi32(opacity), one), weightSums, kOpacities);
  const Bits turned =
      _mm256_blend_epi32(_mm256_sign_epi32(sums, _mm256_or_si256(opacity, one)), sums, kOpacities);
  const Bits dividend = _mm256_add_epi32(turned, _mm256_srli_epi32(divisor, 1));
  const __m256 by = _mm256_cvtepi32_ps(divisor);
  const __m256 rough = _mm256_rcp_ps(by);
  const __m256 reciprocal =
      _mm256_mul_ps(rough, _mm256_fnmadd_ps(by, rough, _mm256_set1_ps(kTwoAndLess)));
  const __m256 ratio = _mm256_mul_ps(_mm256_cvtepi32_ps(dividend), reciprocal);
  const Bits quotient = _mm256_cvttps_epi32(
      _mm256_min_ps(_mm256_max_ps(ratio, _mm256_setzero_ps()), _mm256_set1_ps(255)));
  const Bits rest = _mm256_sub_epi32(dividend, _mm256_mullo_epi32(quotient, divisor));
  const Bits right = _mm256_cmpgt_epi32(divisor, rest);
  return _mm256_add_epi32(quotient, _mm256_andnot_si256(right, one));
}

// Four times three bytes from either half.
void StoreColours(std::uint8_t* to, Bits split) {
  const auto store = [](std::uint8_t* at, __m128i half) {
    const int last = _mm_extract_epi32(half, 2);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(at), half);
    __builtin_memcpy(at + 8, &last, 4);
  };
  store(to, _mm256_castsi256_si128(split));
  store(to + 12, _mm256_extracti128_si256(split, 1));
}

// The first of eight pixels and the fifth.
Bits StretchTwo(const std::uint8_t* from, const BicubicTap* taps, const BicubicWeights* phases) {
  const BicubicWeights& low = phases[taps[0].phase];
  const BicubicWeights& high = phases[taps[4].phase];
  const auto weigh = [&](int index, const BicubicWeights& by) {
    const Bits bytes = LoadTwice(from + 3 * (static_cast<std::ptrdiff_t>(index) - 1));
    return _mm256_madd_epi16(_mm256_shuffle_epi8(bytes, kBytePairs), Load<Bits>(by.pairs));
  };
  return OpaqueQuotients(
      SumHalves(weigh(taps[0].index, low), weigh(taps[4].index, high)),
      _mm256_set_m128(_mm_set1_ps(high.reciprocal), _mm_set1_ps(low.reciprocal)));
}

void Stretch(std::uint8_t* to, const std::uint8_t* from, const BicubicTap* taps, int count) {
  const BicubicWeights* const phases = BicubicPhases();
  for (; count >= kPixels; count -= kPixels, taps += kPixels, to += 3 * kPixels) {
    const auto two = [&](int first) { return StretchTwo(from, taps + first, phases); };
    const Bits bytes =
        _mm256_packus_epi16(_mm256_packs_epi32(two(0), two(1)), _mm256_packs_epi32(two(2), two(3)));
    StoreColours(to, _mm256_shuffle_epi8(bytes, kSplit));
  }
  StretchLoop(to, from, taps, count);
}

// A pair of weights as the factors of pairs of 16-bit numbers.
Bits WeightPair(std::int32_t first, std::int32_t second) {
  return _mm256_set1_epi32((first & 0xFFFF) | second << 16);
}

void Blend(std::uint8_t* to, const std::uint8_t* const (&rows)[4], std::size_t bytes,
           const BicubicWeights& weights) {
  const Bits pair01 = WeightPair(weights.weight[0], weights.weight[1]);
  const Bits pair23 = WeightPair(weights.weight[2], weights.weight[3]);
  const __m256 reciprocals = _mm256_set1_ps(weights.reciprocal);
  const Bits zero = _mm256_setzero_si256();
  std::size_t i = 0;
  for (; i + kBytes <= bytes; i += kBytes) {
    const Bits row0 = Load<Bits>(rows[0] + i), row1 = Load<Bits>(rows[1] + i);
    const Bits row2 = Load<Bits>(rows[2] + i), row3 = Load<Bits>(rows[3] + i);
    const auto quarter = [&](Bits words01, Bits words23) {
      return OpaqueQuotients(
          _mm256_add_epi32(_mm256_madd_epi16(words01, pair01), _mm256_madd_epi16(words23, pair23)),
          reciprocals);
    };
    const auto half = [&](Bits pairs01, Bits pairs23) {
      return _mm256_packs_epi32(
          quarter(_mm256_unpacklo_epi8(pairs01, zero), _mm256_unpacklo_epi8(pairs23, zero)),
          quarter(_mm256_unpackhi_epi8(pairs01, zero), _mm256_unpackhi_epi8(pairs23, zero)));
    };
    const Bits low = half(_mm256_unpacklo_epi8(row0, row1), _mm256_unpacklo_epi8(row2, row3));
    const Bits high = half(_mm256_unpackhi_epi8(row0, row1), _mm256_unpackhi_epi8(row2, row3));
    Store(to + i, _mm256_packus_epi16(low, high));
  }
  const std::uint8_t* const rest[4] = {rows[0] + i, rows[1] + i, rows[2] + i, rows[3] + i};
  BlendLoop(to + i, rest, bytes - i, weights);
}

// Products take signed numbers: 32768 is taken off, and its share added to the sums.
Bits Signed(Bits words) {
  return _mm256_xor_si256(words, _mm256_set1_epi16(-0x8000));
}

Bits MaskedQuotientsOfSigned(Bits sums, Bits weightSums) {
  return MaskedQuotients(_mm256_add_epi32(sums, _mm256_slli_epi32(weightSums, 15)), weightSums);
}

// The first of four pixels and the third.
Bits StretchTwo(const WeighedPixel* from, const BicubicTap* taps, const BicubicWeights* phases) {
  const BicubicWeights& low = phases[taps[0].phase];
  const BicubicWeights& high = phases[taps[2].phase];
  const auto weigh = [&](int index, const BicubicWeights& by) {
    const Bits words = Signed(Load<Bits>(from + index - 1));
    return _mm256_madd_epi16(_mm256_shuffle_epi8(words, kWordPairs), Load<Bits>(by.pairs));
  };
  return MaskedQuotientsOfSigned(SumHalves(weigh(taps[0].index, low), weigh(taps[2].index, high)),
                                 Halves(low, high));
}

void StretchMasked(WeighedPixel* to, const WeighedPixel* from, const BicubicTap* taps, int count) {
  constexpr int kOpacities = 0x88;
  const BicubicWeights* const phases = BicubicPhases();
  for (; count >= 4; count -= 4, taps += 4, to += 4) {
    const Bits words = _mm256_min_epi16(
        _mm256_packs_epi32(StretchTwo(from, taps, phases), StretchTwo(from, taps + 1, phases)),
        _mm256_set1_epi16(255));
    const Bits opacities = _mm256_shufflehi_epi16(_mm256_shufflelo_epi16(words, 0xFF), 0xFF);
    const Bits factors = _mm256_blend_epi16(opacities, _mm256_set1_epi16(1), kOpacities);
    Store(to, _mm256_mullo_epi16(words, factors));
  }
  StretchMaskedLoop(to, from, taps, count);
}

void BlendMasked(std::uint8_t* colour, std::uint8_t* mask, const WeighedPixel* const (&rows)[4],
                 int width, const BicubicWeights& weights) {
  const Bits pair01 = WeightPair(weights.weight[0], weights.weight[1]);
  const Bits pair23 = WeightPair(weights.weight[2], weights.weight[3]);
  const Bits weightSums = _mm256_set1_epi32(weights.sum);
  const auto four = [&](int x) {
    const Bits row0 = Signed(Load<Bits>(rows[0] + x)), row1 = Signed(Load<Bits>(rows[1] + x));
    const Bits row2 = Signed(Load<Bits>(rows[2] + x)), row3 = Signed(Load<Bits>(rows[3] + x));
    const auto weigh = [&](Bits words01, Bits words23) {
      return MaskedQuotientsOfSigned(
          _mm256_add_epi32(_mm256_madd_epi16(words01, pair01), _mm256_madd_epi16(words23, pair23)),
          weightSums);
    };
    return _mm256_packs_epi32(
        weigh(_mm256_unpacklo_epi16(row0, row1), _mm256_unpacklo_epi16(row2, row3)),
        weigh(_mm256_unpackhi_epi16(row0, row1), _mm256_unpackhi_epi16(row2, row3)));
  };
  int x = 0;
  for (; x + kPixels <= width; x += kPixels) {
    const Bits bytes = _mm256_permute4x64_epi64(_mm256_packus_epi16(four(x), four(x + 4)), 0xD8);
    const Bits split = _mm256_shuffle_epi8(bytes, kSplit);
    StoreColours(colour + 3 * x, split);
    const __m128i opacities =
        _mm_unpackhi_epi32(_mm256_castsi256_si128(split), _mm256_extracti128_si256(split, 1));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(mask + x),
                     _mm_xor_si128(_mm_unpackhi_epi64(opacities, opacities), _mm_set1_epi8(-1)));
  }
  const WeighedPixel* const rest[4] = {rows[0] + x, rows[1] + x, rows[2] + x, rows[3] + x};
  BlendMaskedLoop(colour + 3 * x, mask + x, rest, width - x, weights);
}

}  // namespace

const BicubicKernels& BicubicKernels::Avx2() {
  static constexpr BicubicKernels kTable = {Stretch, Blend, WeighLoop, StretchMasked, BlendMasked};
  return kTable;
}

}  // namespace kernels
