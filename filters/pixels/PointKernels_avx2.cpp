// Point kernels for AVX2.
#include <immintrin.h>

#include "filters/pixels/PointKernelLoops.h"
#include "filters/pixels/PointKernelTable.h"
#include "filters/pixels/simd/PixelBlocks_avx2.h"

namespace kernels {
namespace {

__m256i Words(int value) {
  return _mm256_set1_epi16(static_cast<short>(value));
}
__m256i Bytes(int value) {
  return _mm256_set1_epi8(static_cast<char>(value));
}

// The weights of a pair of bytes.
__m256i Weights(int first, int second) {
  return Words(first + second * 256);
}

// A plane out of the bytes of two planes side by side, in 16-bit lanes.
template <class Change>
[[gnu::always_inline]] inline __m256i ChangePairs(__m256i first, __m256i second,
                                                  const Change& change) {
  return _mm256_packus_epi16(change(_mm256_unpacklo_epi8(first, second)),
                             change(_mm256_unpackhi_epi8(first, second)));
}

// The same with a plane beside the first two, doubled.
template <class Change>
[[gnu::always_inline]] inline __m256i ChangePairs(__m256i first, __m256i second, __m256i third,
                                                  const Change& change) {
  return _mm256_packus_epi16(
      change(_mm256_unpacklo_epi8(first, second), _mm256_unpacklo_epi8(third, third)),
      change(_mm256_unpackhi_epi8(first, second), _mm256_unpackhi_epi8(third, third)));
}

// Sepia takes 128 off all bytes by turning their top bit: the weights may then use the whole range
// of a byte and no sum leaves 16 bits.
class SepiaTone {
 public:
  explicit SepiaTone(int keep)
      : mix_(Weights(keep, 255 - keep)),
        blue_(Offset(-55, 255 - keep)),
        green_(Offset(-13, 255 - keep)),
        red_(Offset(49, 255 - keep)) {}

  [[gnu::always_inline]] Block operator()(const Block& block) const {
    const Planes planes = Split(block);
    const Planes centred = {Centre(planes.blue), Centre(planes.green), Centre(planes.red)};
    const __m256i lightness = ChangePairs(centred.green, centred.blue, centred.red, Lightness);
    return Join({Toned(centred.blue, lightness, blue_), Toned(centred.green, lightness, green_),
                 Toned(centred.red, lightness, red_)});
  }

 private:
  // The weighted shift, and what takes a sum that is 255 x 128 too low to 32768 too low: the limits
  // of a lane with sign are then 0 and 65535.
  static __m256i Offset(int shift, int fade) { return Words(shift * fade - 128); }

  static __m256i Centre(__m256i bytes) { return _mm256_xor_si256(bytes, Bytes(128)); }

  // The weights sum to 256: the upper byte is the lightness, 128 off as well.
  static __m256i Lightness(__m256i greenBlue, __m256i redTwice) {
    const __m256i sum = _mm256_add_epi16(_mm256_maddubs_epi16(Weights(151, 28), greenBlue),
                                         _mm256_maddubs_epi16(Weights(77, 0), redTwice));
    return _mm256_srli_epi16(sum, 8);
  }

  [[gnu::always_inline]] __m256i Toned(__m256i channel, __m256i lightness, __m256i offset) const {
    return ChangePairs(channel, lightness, [&](__m256i pairs) {
      const __m256i sum = _mm256_adds_epi16(_mm256_maddubs_epi16(mix_, pairs), offset);
      return DivideBy255(_mm256_xor_si256(sum, Words(0x8000)));
    });
  }

  // Exact for all 16-bit values.
  static __m256i DivideBy255(__m256i value) {
    return _mm256_srli_epi16(_mm256_mulhi_epu16(value, Words(0x8081)), 7);
  }

  __m256i mix_, blue_, green_, red_;
};

void SepiaAvx2(std::uint8_t* colour, int width, std::uint8_t keep) {
  ChangeRow(colour, width, SepiaTone(keep));
}

class GreyMix {
 public:
  explicit GreyMix(int percent) : mix_(Weights(100 - percent, percent)) {}

  [[gnu::always_inline]] Block operator()(const Block& block) const {
    const Planes planes = Split(block);
    const __m256i grey = ChangePairs(planes.green, planes.blue, planes.red, Grey);
    return Join({Mixed(planes.blue, grey), Mixed(planes.green, grey), Mixed(planes.red, grey)});
  }

 private:
  // (71 B + 707 G + 222 R) / 1000 = (sum / 8) / 125. The sum needs 18 bits, its eighth 15: the
  // multiples of 8 in the weights are divided beforehand, the rest of the sum apart. 33555 / 2^22
  // is close enough to 1 / 125 for any eighth.
  static __m256i Grey(__m256i greenBlue, __m256i redTwice) {
    const __m256i eighths = _mm256_add_epi16(_mm256_maddubs_epi16(greenBlue, Weights(88, 8)),
                                             _mm256_maddubs_epi16(redTwice, Weights(27, 0)));
    const __m256i rest = _mm256_add_epi16(_mm256_maddubs_epi16(greenBlue, Weights(3, 7)),
                                          _mm256_maddubs_epi16(redTwice, Weights(6, 0)));
    const __m256i eighth = _mm256_add_epi16(eighths, _mm256_srli_epi16(rest, 3));
    return _mm256_srli_epi16(_mm256_mulhi_epu16(eighth, Words(33555)), 6);
  }

  // 5243 / 2^19 is close enough to 1 / 100 for sums up to 25500.
  [[gnu::always_inline]] __m256i Mixed(__m256i channel, __m256i grey) const {
    return ChangePairs(channel, grey, [this](__m256i pairs) {
      const __m256i sum = _mm256_maddubs_epi16(pairs, mix_);
      return _mm256_srli_epi16(_mm256_mulhi_epu16(sum, Words(5243)), 3);
    });
  }

  __m256i mix_;
};

void BlackWhiteAvx2(std::uint8_t* colour, int width, int percent) {
  if (percent < 0 || percent > 100) return BlackWhite(colour, width, percent);
  ChangeRow(colour, width, GreyMix(percent));
}

void ShiftColoursAvx2(std::uint8_t* colour, int width, const ColourOffsets& offsets) {
  const auto above = [](int offset) { return Bytes(offset > 0 ? offset : 0); };
  const Block raise = Join({above(offsets.blue), above(offsets.green), above(offsets.red)});
  const Block lower = Join({above(-offsets.blue), above(-offsets.green), above(-offsets.red)});
  const auto shift = [](__m256i bytes, __m256i up, __m256i down) {
    return _mm256_subs_epu8(_mm256_adds_epu8(bytes, up), down);
  };
  ChangeRow(colour, width, [&](const Block& block) -> Block {
    return {shift(block.part0, raise.part0, lower.part0),
            shift(block.part1, raise.part1, lower.part1),
            shift(block.part2, raise.part2, lower.part2)};
  });
}

// Which mask of the 16 in the same half belongs to each byte of a part. Parts 0 and 2 lie whole in
// the pixels of one half, part 1 in those of both.
struct alignas(32) MaskPlaces {
  std::uint8_t places[32];
  operator __m256i() const { return _mm256_load_si256(reinterpret_cast<const __m256i*>(places)); }
};
constexpr MaskPlaces MasksOf(int part) {
  MaskPlaces p = {};
  for (int j = 0; j < 32; ++j) p.places[j] = static_cast<std::uint8_t>((32 * part + j) / 3 % 16);
  return p;
}
constexpr MaskPlaces kMaskOfByte[] = {MasksOf(0), MasksOf(1), MasksOf(2)};

// A background that nothing shines through: all sums are parts of 255, and no mask is left.
class OpaqueFill {
 public:
  explicit OpaqueFill(Colour fill)
      : fills(Join({Bytes(fill.blue), Bytes(fill.green), Bytes(fill.red)})) {}

  [[gnu::always_inline]] void ChangeBlock(std::uint8_t* colour, std::uint8_t* mask) const {
    const __m256i masks = Load(mask);
    if (_mm256_testz_si256(masks, masks)) return;
    const __m256i low = _mm256_permute2x128_si256(masks, masks, 0x00);
    const __m256i high = _mm256_permute2x128_si256(masks, masks, 0x11);
    kernels::ChangeBlock(colour, [&](const Block& block) -> Block {
      return {Mixed(block.part0, fills.part0, _mm256_shuffle_epi8(low, kMaskOfByte[0])),
              Mixed(block.part1, fills.part1, _mm256_shuffle_epi8(masks, kMaskOfByte[1])),
              Mixed(block.part2, fills.part2, _mm256_shuffle_epi8(high, kMaskOfByte[2]))};
    });
    Store(mask, _mm256_setzero_si256());
  }

 private:
  [[gnu::always_inline]] static __m256i Mixed(__m256i bytes, __m256i fill, __m256i masks) {
    const __m256i kept = _mm256_xor_si256(masks, Bytes(255));
    // 128 off, as the products take one factor with a sign.
    const __m256i shown = _mm256_xor_si256(bytes, Bytes(128));
    const __m256i laid = _mm256_xor_si256(fill, Bytes(128));
    return _mm256_packus_epi16(
        Part255(_mm256_unpacklo_epi8(kept, masks), _mm256_unpacklo_epi8(shown, laid)),
        Part255(_mm256_unpackhi_epi8(kept, masks), _mm256_unpackhi_epi8(shown, laid)));
  }

  // With 1 more than the sum, which is 128 x 255 too low, the quotient is exact.
  [[gnu::always_inline]] static __m256i Part255(__m256i weights, __m256i pairs) {
    const __m256i sum =
        _mm256_add_epi16(_mm256_maddubs_epi16(weights, pairs), Words(128 * 255 + 1));
    return _mm256_srli_epi16(_mm256_add_epi16(sum, _mm256_srli_epi16(sum, 8)), 8);
  }

  Block fills;
};

void PutBackgroundAvx2(std::uint8_t* colour, std::uint8_t* mask, int width, Colour background,
                       int percent) {
  if (percent != 0) return PutBackgroundLoop(colour, mask, width, background, percent);
  const OpaqueFill fill(background);
  for (; width >= kPixels; width -= kPixels, colour += kBlockBytes, mask += kPixels) {
    Prefetch(colour);
    fill.ChangeBlock(colour, mask);
  }
  MixRow(colour, mask, width, background, OpaqueBackground{});
}

void InvertAvx2(std::uint8_t* bytes, std::size_t count, int percent, const ByteTable& table) {
  if (percent < 0 || percent > 100) {
    return ByteTableKernels::Avx2().mapBytes(bytes, bytes, count, table);
  };
  InvertLoop(bytes, count, percent);
}

}  // namespace

const PointKernelTable& PointKernelTable::Avx2() {
  static constexpr PointKernelTable kTable = {SepiaAvx2,        BlackWhiteAvx2, ShiftColoursAvx2,
                                              InvertAvx2,       FadeLoop,       InvertMaskLoop,
                                              PutBackgroundAvx2};
  return kTable;
}

}  // namespace kernels
