// The operations of Vectors.h for AVX-512 with byte permutes (VBMI), whose vectors of 64 bytes work
// in four quarters. Avx2.h tells what each is.
//
// GCC 12 warns of its own unmasked forms of some intrinsics; a full mask compiles to the same
// instruction.
#pragma once

#include <immintrin.h>

#include "base/ByteTable.h"
#include "filters/pixels/simd/Vectors.h"

namespace kernels {
namespace {

using Bits = __m512i;
constexpr __mmask8 kAll8 = 0xFF;
constexpr __mmask16 kAll16 = 0xFFFF;
constexpr __mmask32 kAll32 = ~__mmask32{0};
constexpr __mmask64 kAll64 = ~__mmask64{0};

// --- whole vectors

[[gnu::always_inline]] inline bool IsAny(Bits bits) {
  return _mm512_test_epi8_mask(bits, bits) != 0;
}
template <class Vector>
[[gnu::always_inline]] inline bool IsAny(const Vector& vector) {
  return IsAny((Bits)vector);
}

[[gnu::always_inline]] inline Bytes Where(Bytes mask, Bytes yes, Bytes no) {
  return (Bytes)_mm512_mask_mov_epi8((Bits)no, _mm512_movepi8_mask((Bits)mask), (Bits)yes);
}

constexpr __mmask64 FirstBytes(int count) {
  return (__mmask64{1} << count) - 1;
}
[[gnu::always_inline]] inline Bytes LoadFront(const std::uint8_t* at, std::ptrdiff_t count) {
  return (Bytes)_mm512_maskz_loadu_epi8(FirstBytes(static_cast<int>(count)), at);
}
[[gnu::always_inline]] inline void StoreFront(std::uint8_t* at, Bytes bytes, std::ptrdiff_t count) {
  _mm512_mask_storeu_epi8(at, FirstBytes(static_cast<int>(count)), (Bits)bytes);
}

template <int kNumber>
[[gnu::always_inline]] inline __m128i Quarter(Bits bits) {
  return _mm512_maskz_extracti32x4_epi32(kAll8, bits, kNumber);
}

// --- lanes side by side

[[gnu::always_inline]] inline Bytes UnpackLow(Bytes even, Bytes odd) {
  return (Bytes)_mm512_unpacklo_epi8((Bits)even, (Bits)odd);
}
[[gnu::always_inline]] inline Bytes UnpackHigh(Bytes even, Bytes odd) {
  return (Bytes)_mm512_unpackhi_epi8((Bits)even, (Bits)odd);
}
[[gnu::always_inline]] inline Words UnpackLow(Words even, Words odd) {
  return (Words)_mm512_unpacklo_epi16((Bits)even, (Bits)odd);
}
[[gnu::always_inline]] inline Words UnpackHigh(Words even, Words odd) {
  return (Words)_mm512_unpackhi_epi16((Bits)even, (Bits)odd);
}
[[gnu::always_inline]] inline Bytes Pack(Words low, Words high) {
  return (Bytes)_mm512_packus_epi16((Bits)low, (Bits)high);
}
[[gnu::always_inline]] inline Shorts Pack(Ints low, Ints high) {
  return (Shorts)_mm512_packs_epi32((Bits)low, (Bits)high);
}

// --- products and sums

[[gnu::always_inline]] inline Words MultiplyPairs(Bytes bytes, Bytes signedBytes) {
  return (Words)_mm512_maddubs_epi16((Bits)bytes, (Bits)signedBytes);
}
[[gnu::always_inline]] inline Ints MultiplyPairs(Shorts a, Shorts b) {
  return (Ints)_mm512_madd_epi16((Bits)a, (Bits)b);
}
[[gnu::always_inline]] inline Words MultiplyHigh(Words a, Words b) {
  return (Words)_mm512_mulhi_epu16((Bits)a, (Bits)b);
}
[[gnu::always_inline]] inline Bytes AddLimited(Bytes a, Bytes b) {
  return (Bytes)_mm512_adds_epu8((Bits)a, (Bits)b);
}
[[gnu::always_inline]] inline Bytes SubtractLimited(Bytes a, Bytes b) {
  return (Bytes)_mm512_subs_epu8((Bits)a, (Bits)b);
}
[[gnu::always_inline]] inline Shorts AddLimited(Shorts a, Shorts b) {
  return (Shorts)_mm512_adds_epi16((Bits)a, (Bits)b);
}
[[gnu::always_inline]] inline Words AddLimited(Words a, Words b) {
  return (Words)_mm512_adds_epu16((Bits)a, (Bits)b);
}
[[gnu::always_inline]] inline Bytes AddSignedLimited(Bytes bytes, Bytes signedBytes) {
  const Bytes half = All<Bytes>(128);
  return half ^ (Bytes)_mm512_adds_epi8((Bits)(bytes ^ half), (Bits)signedBytes);
}
[[gnu::always_inline]] inline Words AddOneWhereLess(Words number, Shorts a, Shorts b) {
  const Bits less = (Bits)All<Words>(-1);
  return (Words)_mm512_mask_sub_epi16((Bits)number, _mm512_cmplt_epi16_mask((Bits)a, (Bits)b),
                                      (Bits)number, less);
}

// --- floats

[[gnu::always_inline]] inline Floats Max(Floats value, Floats limit) {
  return _mm512_maskz_max_ps(kAll16, value, limit);
}
[[gnu::always_inline]] inline Floats Min(Floats value, Floats limit) {
  return _mm512_maskz_min_ps(kAll16, value, limit);
}
[[gnu::always_inline]] inline Floats MultiplyAdd(Floats a, Floats b, Floats c) {
  return _mm512_fmadd_ps(a, b, c);
}
[[gnu::always_inline]] inline Floats Nearest(Floats value) {
  return _mm512_maskz_roundscale_ps(kAll16, value, 0);
}
[[gnu::always_inline]] inline Floats Magnitude(Floats value) {
  return _mm512_abs_ps(value);
}
[[gnu::always_inline]] inline bool IsAnyWithin(Floats value, float limit) {
  return _mm512_cmp_ps_mask(Magnitude(value), All<Floats>(limit), _CMP_LT_OQ) != 0;
}
[[gnu::always_inline]] inline Floats Root(Floats value) {
  return _mm512_maskz_sqrt_ps(kAll16, value);
}
[[gnu::always_inline]] inline Floats LoadFloats(const std::uint8_t* bytes) {
  const __m128i sixteen = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
  return _mm512_maskz_cvtepi32_ps(kAll16, _mm512_maskz_cvtepu8_epi32(kAll16, sixteen));
}
[[gnu::always_inline]] inline void StoreTruncated(std::uint8_t* bytes, Floats values) {
  const Bits whole = _mm512_maskz_cvttps_epi32(kAll16, values);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), _mm512_maskz_cvtepi32_epi8(kAll16, whole));
}

// --- doubles

[[gnu::always_inline]] inline Doubles Max(Doubles value, Doubles limit) {
  return _mm512_maskz_max_pd(kAll8, value, limit);
}
[[gnu::always_inline]] inline Doubles Min(Doubles value, Doubles limit) {
  return _mm512_maskz_min_pd(kAll8, value, limit);
}
[[gnu::always_inline]] inline Doubles MultiplyAdd(Doubles a, Doubles b, Doubles c) {
  return _mm512_fmadd_pd(a, b, c);
}
[[gnu::always_inline]] inline Doubles Nearest(Doubles value) {
  return _mm512_maskz_roundscale_pd(kAll8, value, 0);
}
[[gnu::always_inline]] inline Doubles Magnitude(Doubles value) {
  return _mm512_abs_pd(value);
}
[[gnu::always_inline]] inline auto IsWithin(Doubles value, double limit) {
  return Magnitude(value) <= limit;
}
// Two steps bring the reciprocal from 14 bits to nearly all; the remainder that the product leaves,
// which is exact, then corrects its last place.
[[gnu::always_inline]] inline Doubles Quotient(Doubles a, Doubles b) {
  Doubles reciprocal = _mm512_maskz_rcp14_pd(kAll8, b);
  for (int step = 0; step < 2; ++step) {
    const Doubles off = MultiplyAdd(-b, reciprocal, All<Doubles>(1));
    reciprocal = MultiplyAdd(off, reciprocal, reciprocal);
  }
  const Doubles about = a * reciprocal;
  return MultiplyAdd(MultiplyAdd(-b, about, a), reciprocal, about);
}
[[gnu::always_inline]] inline Doubles LoadDoubles(const std::uint8_t* bytes) {
  const __m128i eight = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(bytes));
  return _mm512_maskz_cvtepi64_pd(kAll8, _mm512_maskz_cvtepu8_epi64(kAll8, eight));
}
[[gnu::always_inline]] inline void StoreTruncated(std::uint8_t* bytes, Doubles values) {
  const __m256i whole = _mm512_maskz_cvttpd_epi32(kAll8, values);
  _mm_storel_epi64(reinterpret_cast<__m128i*>(bytes), _mm256_maskz_cvtepi32_epi8(kAll8, whole));
}

[[gnu::always_inline]] inline void StoreTruncated(std::int32_t* at, Doubles values) {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(at), _mm512_maskz_cvttpd_epi32(kAll8, values));
}

template <class Change>
[[gnu::always_inline]] inline Words ChangeAsDoubles(Shorts a, Shorts b, const Change& change) {
  const auto real = [](__m128i words) {
    return _mm512_maskz_cvtepi32_pd(kAll8, _mm256_cvtepi16_epi32(words));
  };
  const auto eight = [&](__m128i p, __m128i q) __attribute__((always_inline)) {
    const __m256i whole = _mm512_maskz_cvttpd_epi32(kAll8, change(real(p), real(q)));
    return _mm256_maskz_cvtepi32_epi16(kAll8, whole);
  };
  const auto sixteen = [](__m128i low, __m128i high) { return _mm256_set_m128i(high, low); };
  const __m256i low = sixteen(eight(Quarter<0>((Bits)a), Quarter<0>((Bits)b)),
                              eight(Quarter<1>((Bits)a), Quarter<1>((Bits)b)));
  const __m256i high = sixteen(eight(Quarter<2>((Bits)a), Quarter<2>((Bits)b)),
                               eight(Quarter<3>((Bits)a), Quarter<3>((Bits)b)));
  return (Words)_mm512_maskz_inserti64x4(kAll8, _mm512_castsi256_si512(low), high, 1);
}

template <class Place>
[[gnu::always_inline]] inline Doubles LoadEach(const Place& place) {
  return _mm512_setr_pd(*place(0), *place(1), *place(2), *place(3), *place(4), *place(5), *place(6),
                        *place(7));
}

template <class Place>
[[gnu::always_inline]] inline Doubles LoadFours(const Place& place) {
  const __m512d first = _mm512_castpd256_pd512(_mm256_load_pd(place(0)));
  return _mm512_mask_broadcast_f64x4(first, 0xF0, _mm256_load_pd(place(1)));
}

struct TwoDoubles {
  Doubles first, second;
};
template <class Place>
[[gnu::always_inline]] inline TwoDoubles LoadPairs(const Place& place) {
  const auto everySecond = [&](int first) __attribute__((always_inline)) {
    __m512d pairs = _mm512_castpd128_pd512(_mm_load_pd(place(first)));
    pairs = _mm512_mask_broadcast_f64x2(pairs, 0x0C, _mm_load_pd(place(first + 2)));
    pairs = _mm512_mask_broadcast_f64x2(pairs, 0x30, _mm_load_pd(place(first + 4)));
    return _mm512_mask_broadcast_f64x2(pairs, 0xC0, _mm_load_pd(place(first + 6)));
  };
  const __m512d even = everySecond(0);
  const __m512d odd = everySecond(1);
  return {_mm512_maskz_unpacklo_pd(kAll8, even, odd), _mm512_maskz_unpackhi_pd(kAll8, even, odd)};
}

// --- pixels

struct Block {
  Bytes part0, part1, part2;
};

struct Planes {
  Bytes blue, green, red;
};

// Which byte of one vector, or of two, each byte of a permuted one comes from.
struct alignas(64) Permutation {
  std::uint8_t from[64];
  operator Bits() const { return _mm512_load_si512(from); }
};

[[gnu::always_inline]] inline Bytes Permute(const Permutation& how, Bytes bytes) {
  return (Bytes)_mm512_maskz_permutexvar_epi8(kAll64, how, (Bits)bytes);
}
[[gnu::always_inline]] inline Bytes Permute(const Permutation& how, Bytes first, Bytes second) {
  return (Bytes)_mm512_permutex2var_epi8((Bits)first, how, (Bits)second);
}

// The bytes of a channel lie 3 apart. Those in the first two parts are gathered by one permute of
// both, those in the third by another, which leaves the first ones alone.
constexpr int kInFirstParts = 128;

constexpr Permutation FromFirstParts(int channel) {
  Permutation p = {};
  for (int i = 0; i < 64; ++i) {
    const int at = 3 * i + channel;
    p.from[i] = static_cast<std::uint8_t>(at < kInFirstParts ? at : 0);
  }
  return p;
}
constexpr Permutation FromLastPart(int channel) {
  Permutation p = {};
  for (int i = 0; i < 64; ++i) {
    const int at = 3 * i + channel;
    p.from[i] = static_cast<std::uint8_t>(at < kInFirstParts ? i : 64 + at - kInFirstParts);
  }
  return p;
}

// The way back: blue and green of a part by one permute, then red among them.
constexpr Permutation BlueAndGreen(int part) {
  Permutation p = {};
  for (int j = 0; j < 64; ++j) {
    const int at = 64 * part + j;
    p.from[j] = static_cast<std::uint8_t>(at % 3 == 1 ? 64 + at / 3 : at / 3);
  }
  return p;
}
constexpr Permutation AndRed(int part) {
  Permutation p = {};
  for (int j = 0; j < 64; ++j) {
    const int at = 64 * part + j;
    p.from[j] = static_cast<std::uint8_t>(at % 3 == 2 ? 64 + at / 3 : j);
  }
  return p;
}

constexpr Permutation kFromFirstParts[] = {FromFirstParts(0), FromFirstParts(1), FromFirstParts(2)};
constexpr Permutation kFromLastPart[] = {FromLastPart(0), FromLastPart(1), FromLastPart(2)};
constexpr Permutation kBlueAndGreen[] = {BlueAndGreen(0), BlueAndGreen(1), BlueAndGreen(2)};
constexpr Permutation kAndRed[] = {AndRed(0), AndRed(1), AndRed(2)};

[[gnu::always_inline]] inline Planes Split(const Block& block) {
  const auto plane = [&](int channel) {
    const Bytes first = Permute(kFromFirstParts[channel], block.part0, block.part1);
    return Permute(kFromLastPart[channel], first, block.part2);
  };
  return {plane(0), plane(1), plane(2)};
}

[[gnu::always_inline]] inline Block Join(const Planes& planes) {
  const auto part = [&](int number) {
    const Bytes two = Permute(kBlueAndGreen[number], planes.blue, planes.green);
    return Permute(kAndRed[number], two, planes.red);
  };
  return {part(0), part(1), part(2)};
}

// The pixel of each byte of a part.
constexpr Permutation PixelsOf(int part) {
  Permutation p = {};
  for (int j = 0; j < 64; ++j) p.from[j] = static_cast<std::uint8_t>((64 * part + j) / 3);
  return p;
}
constexpr Permutation kPixelOfByte[] = {PixelsOf(0), PixelsOf(1), PixelsOf(2)};

[[gnu::always_inline]] inline Block Spread(Bytes masks) {
  return {Permute(kPixelOfByte[0], masks), Permute(kPixelOfByte[1], masks),
          Permute(kPixelOfByte[2], masks)};
}

// --- doubles to bytes

// The lowest byte of each 64-bit lane of two vectors.
constexpr Permutation kLowestBytes = [] {
  Permutation p = {};
  for (int i = 0; i < 64; ++i) p.from[i] = static_cast<std::uint8_t>(8 * (i % 16));
  return p;
}();

template <class Numbers>
[[gnu::always_inline]] inline Bytes BytesOf(const Numbers& numbers) {
  const auto eight = [&](int i) __attribute__((always_inline)) {
    return (Bytes)_mm512_maskz_cvttpd_epi64(kAll8, numbers(i));
  };
  const auto sixteen = [&](int i) __attribute__((always_inline)) {
    return (Bits)Permute(kLowestBytes, eight(i), eight(i + 8));
  };
  const auto half = [&](int i) __attribute__((always_inline)) {
    const Bits last = sixteen(i + 16);
    return _mm512_mask_shuffle_i32x4(sixteen(i), 0x00F0, last, last, 0);
  };
  const Bits last = half(32);
  return (Bytes)_mm512_mask_shuffle_i64x2(half(0), 0xF0, last, last, _MM_SHUFFLE(1, 0, 1, 0));
}

// --- tables

// The whole table is in four vectors.
class ByteLookup {
 public:
  explicit ByteLookup(const base::ByteTable& table) {
    const auto* const entries = reinterpret_cast<const std::uint8_t*>(&table);
    for (int i = 0; i < 4; ++i) quarters_[i] = Load<Bytes>(entries + 64 * i);
  }

  // The permutes look at seven bits; the eighth chooses between the halves.
  [[gnu::always_inline]] Bytes operator()(Bytes bytes) const {
    const Bits low = _mm512_permutex2var_epi8((Bits)quarters_[0], (Bits)bytes, (Bits)quarters_[1]);
    const Bits high = _mm512_permutex2var_epi8((Bits)quarters_[2], (Bits)bytes, (Bits)quarters_[3]);
    return Where(bytes, (Bytes)high, (Bytes)low);
  }

 private:
  Bytes quarters_[4];
};

}  // namespace
}  // namespace kernels
