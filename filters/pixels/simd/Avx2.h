// The operations of Vectors.h for AVX2, whose vectors of 32 bytes work in two halves.
#pragma once

#include <immintrin.h>

#include "base/ByteTable.h"
#include "filters/pixels/simd/Vectors.h"

namespace kernels {
namespace {

// The types of the intrinsics, which know bits but not what they stand for.
using Bits = __m256i;

// --- whole vectors

[[gnu::always_inline]] inline bool IsAny(Bits bits) {
  return !_mm256_testz_si256(bits, bits);
}
template <class Vector>
[[gnu::always_inline]] inline bool IsAny(const Vector& vector) {
  return IsAny((Bits)vector);
}

// The bytes of `yes` where the top bit of the mask is set, else those of `no`.
[[gnu::always_inline]] inline Bytes Where(Bytes mask, Bytes yes, Bytes no) {
  return (Bytes)_mm256_blendv_epi8((Bits)no, (Bits)yes, (Bits)mask);
}

// Stores the first `count` bytes.
[[gnu::always_inline]] inline void StoreFront(std::uint8_t* at, Bytes bytes, std::ptrdiff_t count) {
  std::uint8_t all[kVectorBytes];
  Store(all, bytes);
  __builtin_memcpy(at, all, static_cast<std::size_t>(count));
}

// --- lanes side by side

// The lower or upper lanes of each 16 bytes of two vectors in turn, as lanes of twice the size.
// Packs undo them; they limit numbers with a sign to the smaller range.
[[gnu::always_inline]] inline Bytes UnpackLow(Bytes even, Bytes odd) {
  return (Bytes)_mm256_unpacklo_epi8((Bits)even, (Bits)odd);
}
[[gnu::always_inline]] inline Bytes UnpackHigh(Bytes even, Bytes odd) {
  return (Bytes)_mm256_unpackhi_epi8((Bits)even, (Bits)odd);
}
[[gnu::always_inline]] inline Words UnpackLow(Words even, Words odd) {
  return (Words)_mm256_unpacklo_epi16((Bits)even, (Bits)odd);
}
[[gnu::always_inline]] inline Words UnpackHigh(Words even, Words odd) {
  return (Words)_mm256_unpackhi_epi16((Bits)even, (Bits)odd);
}
[[gnu::always_inline]] inline Bytes Pack(Words low, Words high) {
  return (Bytes)_mm256_packus_epi16((Bits)low, (Bits)high);
}
[[gnu::always_inline]] inline Shorts Pack(Ints low, Ints high) {
  return (Shorts)_mm256_packs_epi32((Bits)low, (Bits)high);
}

// --- products and sums

// Products of bytes and of bytes with a sign, each two neighbours added: no sum may leave 16 bits.
[[gnu::always_inline]] inline Words MultiplyPairs(Bytes bytes, Bytes signedBytes) {
  return (Words)_mm256_maddubs_epi16((Bits)bytes, (Bits)signedBytes);
}
// Products of numbers with a sign, each two neighbours added.
[[gnu::always_inline]] inline Ints MultiplyPairs(Shorts a, Shorts b) {
  return (Ints)_mm256_madd_epi16((Bits)a, (Bits)b);
}
// The upper halves of the products.
[[gnu::always_inline]] inline Words MultiplyHigh(Words a, Words b) {
  return (Words)_mm256_mulhi_epu16((Bits)a, (Bits)b);
}
// Limited to the range of the lanes.
[[gnu::always_inline]] inline Bytes AddLimited(Bytes a, Bytes b) {
  return (Bytes)_mm256_adds_epu8((Bits)a, (Bits)b);
}
[[gnu::always_inline]] inline Bytes SubtractLimited(Bytes a, Bytes b) {
  return (Bytes)_mm256_subs_epu8((Bits)a, (Bits)b);
}
[[gnu::always_inline]] inline Shorts AddLimited(Shorts a, Shorts b) {
  return (Shorts)_mm256_adds_epi16((Bits)a, (Bits)b);
}
// Of bytes and of bytes with a sign.
[[gnu::always_inline]] inline Bytes AddSignedLimited(Bytes bytes, Bytes signedBytes) {
  const Bytes half = All<Bytes>(128);
  return half ^ (Bytes)_mm256_adds_epi8((Bits)(bytes ^ half), (Bits)signedBytes);
}
[[gnu::always_inline]] inline Words AddOneWhereLess(Words number, Shorts a, Shorts b) {
  return number - (Words)(a < b);
}

// --- floats

[[gnu::always_inline]] inline Floats Max(Floats value, Floats limit) {
  return _mm256_max_ps(value, limit);
}
[[gnu::always_inline]] inline Floats Min(Floats value, Floats limit) {
  return _mm256_min_ps(value, limit);
}
// a * b + c, rounded once.
[[gnu::always_inline]] inline Floats MultiplyAdd(Floats a, Floats b, Floats c) {
  return _mm256_fmadd_ps(a, b, c);
}
// The nearest whole number, the even one of two.
[[gnu::always_inline]] inline Floats Nearest(Floats value) {
  return _mm256_round_ps(value, _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC);
}
[[gnu::always_inline]] inline Floats Magnitude(Floats value) {
  return _mm256_andnot_ps(All<Floats>(-0.0f), value);
}
// Whether any of them lies within -limit..limit, the ends left out.
[[gnu::always_inline]] inline bool IsAnyWithin(Floats value, float limit) {
  return _mm256_movemask_ps(_mm256_cmp_ps(Magnitude(value), All<Floats>(limit), _CMP_LT_OQ)) != 0;
}
[[gnu::always_inline]] inline Floats Root(Floats value) {
  return _mm256_sqrt_ps(value);
}
[[gnu::always_inline]] inline Floats LoadFloats(const std::uint8_t* bytes) {
  const __m128i eight = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(bytes));
  return _mm256_cvtepi32_ps(_mm256_cvtepu8_epi32(eight));
}
// Truncated numbers of 0..255.
[[gnu::always_inline]] inline void StoreTruncated(std::uint8_t* bytes, Floats values) {
  const Bits whole = _mm256_cvttps_epi32(values);
  const __m128i words =
      _mm_packus_epi32(_mm256_castsi256_si128(whole), _mm256_extracti128_si256(whole, 1));
  _mm_storel_epi64(reinterpret_cast<__m128i*>(bytes), _mm_packus_epi16(words, words));
}

// --- doubles

// GCC makes two instructions of the general forms where the limit is a constant.
[[gnu::always_inline]] inline Doubles Max(Doubles value, Doubles limit) {
  return _mm256_max_pd(value, limit);
}
[[gnu::always_inline]] inline Doubles Min(Doubles value, Doubles limit) {
  return _mm256_min_pd(value, limit);
}
[[gnu::always_inline]] inline Doubles MultiplyAdd(Doubles a, Doubles b, Doubles c) {
  return _mm256_fmadd_pd(a, b, c);
}
[[gnu::always_inline]] inline Doubles Nearest(Doubles value) {
  return _mm256_round_pd(value, _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC);
}
[[gnu::always_inline]] inline Doubles Magnitude(Doubles value) {
  return _mm256_andnot_pd(All<Doubles>(-0.0), value);
}
// Whether it lies in -limit..limit.
[[gnu::always_inline]] inline auto IsWithin(Doubles value, double limit) {
  return Magnitude(value) <= limit;
}
// Rounded to the nearest: by the divider, or in a way that takes none of its time. That is right
// for the spans of colours by their lightness, of which all pairs of channels have been tried.
[[gnu::always_inline]] inline Doubles Quotient(Doubles a, Doubles b) {
  return a / b;
}
[[gnu::always_inline]] inline Doubles LoadDoubles(const std::uint8_t* bytes) {
  return _mm256_cvtepi32_pd(_mm_cvtepu8_epi32(_mm_loadu_si32(bytes)));
}
// The low bytes of the truncated numbers.
[[gnu::always_inline]] inline void StoreTruncated(std::uint8_t* bytes, Doubles values) {
  const __m128i lowBytes = _mm_set1_epi32(0x0C080400);
  _mm_storeu_si32(bytes, _mm_shuffle_epi8(_mm256_cvttpd_epi32(values), lowBytes));
}

[[gnu::always_inline]] inline void StoreTruncated(std::int32_t* at, Doubles values) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(at), _mm256_cvttpd_epi32(values));
}

// change(a, b) of the numbers in doubles, truncated: 0..255 or less.
template <class Change>
[[gnu::always_inline]] inline Words ChangeAsDoubles(Shorts a, Shorts b, const Change& change) {
  const auto real = [](__m128i words) { return _mm256_cvtepi32_pd(_mm_cvtepi16_epi32(words)); };
  const auto four = [&](__m128i p, __m128i q) __attribute__((always_inline)) {
    return _mm256_cvttpd_epi32(change(real(p), real(q)));
  };
  const auto eight = [&](__m128i p, __m128i q) __attribute__((always_inline)) {
    return _mm_packs_epi32(four(p, q), four(_mm_srli_si128(p, 8), _mm_srli_si128(q, 8)));
  };
  return (Words)_mm256_set_m128i(
      eight(_mm256_extracti128_si256((Bits)a, 1), _mm256_extracti128_si256((Bits)b, 1)),
      eight(_mm256_castsi256_si128((Bits)a), _mm256_castsi256_si128((Bits)b)));
}

// numbers(i) gives those of the lanes from i on, 0..255, which become bytes: truncated.
template <class Numbers>
[[gnu::always_inline]] inline Bytes BytesOf(const Numbers& numbers) {
  const auto eight = [&](int i) __attribute__((always_inline)) {
    return _mm_packs_epi32(_mm256_cvttpd_epi32(numbers(i)), _mm256_cvttpd_epi32(numbers(i + 4)));
  };
  const auto sixteen = [&](int i) __attribute__((always_inline)) {
    return _mm_packus_epi16(eight(i), eight(i + 8));
  };
  return (Bytes)_mm256_set_m128i(sixteen(16), sixteen(0));
}

// place(i) gives where each number is, which single loads fetch faster than a gather.
template <class Place>
[[gnu::always_inline]] inline Doubles LoadEach(const Place& place) {
  return _mm256_setr_pd(*place(0), *place(1), *place(2), *place(3));
}

// place(n) gives where four numbers are, aligned to 32 bytes, which come one after the other.
template <class Place>
[[gnu::always_inline]] inline Doubles LoadFours(const Place& place) {
  return _mm256_load_pd(place(0));
}

// place(i) gives where two numbers are, the first ones and the second ones of which become a vector
// each. Places are aligned to 16 bytes.
struct TwoDoubles {
  Doubles first, second;
};
template <class Place>
[[gnu::always_inline]] inline TwoDoubles LoadPairs(const Place& place) {
  const auto everySecond = [&](int first) __attribute__((always_inline)) {
    return _mm256_set_m128d(_mm_load_pd(place(first + 2)), _mm_load_pd(place(first)));
  };
  const __m256d even = everySecond(0);
  const __m256d odd = everySecond(1);
  return {_mm256_unpacklo_pd(even, odd), _mm256_unpackhi_pd(even, odd)};
}

// --- pixels

// A block of pixels as it lies in the row.
struct Block {
  Bytes part0, part1, part2;
};

// One channel of the pixels of a block each.
struct Planes {
  Bytes blue, green, red;
};

// One pattern of 16 bytes for both halves of a vector.
struct alignas(16) Pattern {
  std::uint8_t bytes[16];
  operator Bits() const {
    return _mm256_broadcastsi128_si256(_mm_load_si128(reinterpret_cast<const __m128i*>(bytes)));
  }
};

// Three pieces of 16 bytes hold 16 pixels. Because 3 and 16 have no common divisor, the bytes of
// one channel stand at different places in each piece: blends gather them in one vector, one
// shuffle sorts them.

// Where a piece holds bytes of the channel.
constexpr Pattern Holds(int channel, int piece) {
  Pattern p = {};
  for (int j = 0; j < 16; ++j) {
    p.bytes[j] = static_cast<std::uint8_t>((16 * piece + j) % 3 == channel ? 255 : 0);
  }
  return p;
}

// Where each pixel's byte of the channel lies in its piece.
constexpr Pattern Places(int channel) {
  Pattern p = {};
  for (int i = 0; i < 16; ++i) p.bytes[i] = static_cast<std::uint8_t>((3 * i + channel) % 16);
  return p;
}

// The way back: which pixel has its byte of the channel at each place.
constexpr Pattern Pixels(int channel) {
  Pattern p = {};
  for (int i = 0; i < 16; ++i) p.bytes[(3 * i + channel) % 16] = static_cast<std::uint8_t>(i);
  return p;
}

constexpr Pattern kHolds[3][3] = {{Holds(0, 0), Holds(0, 1), Holds(0, 2)},
                                  {Holds(1, 0), Holds(1, 1), Holds(1, 2)},
                                  {Holds(2, 0), Holds(2, 1), Holds(2, 2)}};
constexpr Pattern kPlaces[] = {Places(0), Places(1), Places(2)};
constexpr Pattern kPixelAt[] = {Pixels(0), Pixels(1), Pixels(2)};

[[gnu::always_inline]] inline Planes Split(const Block& block) {
  // Lower halves: the three pieces of the first 16 pixels; upper halves: those of the others.
  const Bits part0 = (Bits)block.part0, part1 = (Bits)block.part1, part2 = (Bits)block.part2;
  const Bits piece0 = _mm256_permute2x128_si256(part0, part1, 0x30);
  const Bits piece1 = _mm256_permute2x128_si256(part0, part2, 0x21);
  const Bits piece2 = _mm256_permute2x128_si256(part1, part2, 0x30);
  const auto plane = [&](int channel) {
    const Bits two = _mm256_blendv_epi8(piece0, piece1, kHolds[channel][1]);
    return (Bytes)_mm256_shuffle_epi8(_mm256_blendv_epi8(two, piece2, kHolds[channel][2]),
                                      kPlaces[channel]);
  };
  return {plane(0), plane(1), plane(2)};
}

[[gnu::always_inline]] inline Block Join(const Planes& planes) {
  const Bits blue = _mm256_shuffle_epi8((Bits)planes.blue, kPixelAt[0]);
  const Bits green = _mm256_shuffle_epi8((Bits)planes.green, kPixelAt[1]);
  const Bits red = _mm256_shuffle_epi8((Bits)planes.red, kPixelAt[2]);
  const auto piece = [&](int number) {
    const Bits two = _mm256_blendv_epi8(blue, green, kHolds[1][number]);
    return _mm256_blendv_epi8(two, red, kHolds[2][number]);
  };
  const Bits piece0 = piece(0);
  const Bits piece1 = piece(1);
  const Bits piece2 = piece(2);
  return {(Bytes)_mm256_permute2x128_si256(piece0, piece1, 0x20),
          (Bytes)_mm256_permute2x128_si256(piece2, piece0, 0x30),
          (Bytes)_mm256_permute2x128_si256(piece1, piece2, 0x31)};
}

// Which mask of the 16 in the same half belongs to each byte of a part. Parts 0 and 2 lie whole in
// the pixels of one half, part 1 in those of both.
struct alignas(32) MaskPlaces {
  std::uint8_t places[32];
  operator Bits() const { return _mm256_load_si256(reinterpret_cast<const Bits*>(places)); }
};
constexpr MaskPlaces MasksOf(int part) {
  MaskPlaces p = {};
  for (int j = 0; j < 32; ++j) p.places[j] = static_cast<std::uint8_t>((32 * part + j) / 3 % 16);
  return p;
}
constexpr MaskPlaces kMaskOfByte[] = {MasksOf(0), MasksOf(1), MasksOf(2)};

// Each number of a pixel three times, beside its channels.
[[gnu::always_inline]] inline Block Spread(Bytes masks) {
  const Bits low = _mm256_permute2x128_si256((Bits)masks, (Bits)masks, 0x00);
  const Bits high = _mm256_permute2x128_si256((Bits)masks, (Bits)masks, 0x11);
  return {(Bytes)_mm256_shuffle_epi8(low, kMaskOfByte[0]),
          (Bytes)_mm256_shuffle_epi8((Bits)masks, kMaskOfByte[1]),
          (Bytes)_mm256_shuffle_epi8(high, kMaskOfByte[2])};
}

// --- tables

// Bytes through a table, which is in 16 parts of 16 entries, each of which a shuffle looks up by
// the lower four bits of a byte and leaves at 0 where the top bit is set. A byte is brought down by
// 16 from part to part, so that it leaves the range of the parts above its own; as each part holds
// what differs from the part before it, the found entries of the others cancel out. Both halves of
// the table work so.
class ByteLookup {
 public:
  explicit ByteLookup(const base::ByteTable& table) {
    const auto* const entries = reinterpret_cast<const std::uint8_t*>(&table);
    for (int half = 0; half < 2; ++half) {
      Bits before = _mm256_setzero_si256();
      for (int i = 8 * half; i < 8 * half + 8; ++i) {
        const Bits part = _mm256_broadcastsi128_si256(
            _mm_loadu_si128(reinterpret_cast<const __m128i*>(entries + 16 * i)));
        parts_[i] = _mm256_xor_si256(part, before);
        before = part;
      }
    }
  }

  [[gnu::always_inline]] Bytes operator()(Bytes bytes) const {
    return LookUp(parts_, bytes) ^ LookUp(parts_ + 8, bytes ^ All<Bytes>(128));
  }

 private:
  // Of bytes below 128; the others, which saturate at -128, give 0.
  [[gnu::always_inline]] static Bytes LookUp(const Bits* parts, Bytes bytes) {
    const Bits step = _mm256_set1_epi8(16);
    Bits low = (Bits)bytes;
    Bits found = _mm256_shuffle_epi8(parts[0], low);
#pragma GCC unroll 7
    for (int i = 1; i < 8; ++i) {
      low = _mm256_subs_epi8(low, step);
      found = _mm256_xor_si256(found, _mm256_shuffle_epi8(parts[i], low));
      // Step by step: GCC would look up all parts first and run out of registers.
      asm("" : "+x"(found), "+x"(low));
    }
    return (Bytes)found;
  }

  Bits parts_[16];
};

}  // namespace
}  // namespace kernels
