// Point kernels for AVX-512 with byte permutes (VBMI).
#include <immintrin.h>

#include "filters/pixels/PointKernelLoops.h"
#include "filters/pixels/PointKernelTable.h"
#include "filters/pixels/simd/PixelBlocks_avx512.h"

namespace kernels {
namespace {

constexpr __mmask64 kEvenBytes = 0x5555555555555555;
constexpr __mmask64 kOddBytes = ~kEvenBytes;

// Two channels of each pixel side by side. The pixels of the first half of a block lie in parts 0
// and 1, those of the second in parts 1 and 2.
constexpr Permutation Pairs(int half, int even, int odd) {
  Permutation p = {};
  for (int i = 0; i < 32; ++i) {
    const int pixel = 3 * (i + 32 * half) - 64 * half;
    p.from[2 * i] = static_cast<std::uint8_t>(pixel + even);
    p.from[2 * i + 1] = static_cast<std::uint8_t>(pixel + odd);
  }
  return p;
}

// Brings the upper byte of a pixel's 16-bit lane beside each byte of the pixel in a part of the
// block, which is the other byte of its pair. Lane 0 stands for pixel 16 x part.
constexpr Permutation Beside(int part) {
  Permutation p = {};
  for (int j = 0; j < 64; ++j) {
    const int pixel = (64 * part + (j ^ 1)) / 3;
    p.from[j] = static_cast<std::uint8_t>(2 * (pixel - 16 * part) + 1);
  }
  return p;
}

// The channel of each byte of a part.
constexpr Permutation Channels(int part) {
  Permutation p = {};
  for (int j = 0; j < 64; ++j) p.from[j] = static_cast<std::uint8_t>((64 * part + j) % 3);
  return p;
}

constexpr Permutation kGreenBlue[] = {Pairs(0, 1, 0), Pairs(1, 1, 0)};
constexpr Permutation kRedTwice[] = {Pairs(0, 2, 2), Pairs(1, 2, 2)};
constexpr Permutation kBeside[] = {Beside(0), Beside(1), Beside(2)};
constexpr Permutation kChannelOfByte[] = {Channels(0), Channels(1), Channels(2)};

// The channel of every second byte, starting with `first`, one a 16-bit lane.
struct alignas(64) LaneChannels {
  std::uint16_t channel[32];
  operator __m512i() const { return _mm512_load_si512(channel); }
};
constexpr LaneChannels ChannelsFrom(int first) {
  LaneChannels lanes = {};
  for (int i = 0; i < 32; ++i) lanes.channel[i] = static_cast<std::uint16_t>((first + 2 * i) % 3);
  return lanes;
}
constexpr LaneChannels kChannelOfLane[] = {ChannelsFrom(0), ChannelsFrom(1), ChannelsFrom(2)};

// GCC 12 warns of its own unmasked forms of these; a full mask compiles to the same instruction.
__m512i Permute(const Permutation& how, __m512i bytes) {
  return _mm512_maskz_permutexvar_epi8(~__mmask64{0}, how, bytes);
}
__m512i Permute(const LaneChannels& how, __m512i lanes) {
  return _mm512_maskz_permutexvar_epi16(~__mmask32{0}, how, lanes);
}
// The upper half of `first` and the lower half of `last`.
__m512i Middle(__m512i first, __m512i last) {
  return _mm512_maskz_shuffle_i64x2(0xFF, first, last, _MM_SHUFFLE(1, 0, 3, 2));
}

__m512i Words(int value) {
  return _mm512_set1_epi16(static_cast<short>(value));
}
__m512i Bytes(int value) {
  return _mm512_set1_epi8(static_cast<char>(value));
}

// The weights of a pair of bytes: the even one's and the odd one's.
__m512i Weights(int even, int odd) {
  return Words(even + odd * 256);
}

// `value` makes one number of a pixel in the upper byte of a 16-bit lane, out of its pairs (green,
// blue) and (red, red). `mix` makes a part of the block of the part, its numbers and its place.
template <class Value, class Mix>
[[gnu::always_inline]] inline Block ChangeByValue(const Block& block, const Value& value,
                                                  const Mix& mix) {
  const __m512i first = value(_mm512_permutex2var_epi8(block.part0, kGreenBlue[0], block.part1),
                              _mm512_permutex2var_epi8(block.part0, kRedTwice[0], block.part1));
  const __m512i last = value(_mm512_permutex2var_epi8(block.part1, kGreenBlue[1], block.part2),
                             _mm512_permutex2var_epi8(block.part1, kRedTwice[1], block.part2));
  const __m512i middle = Middle(first, last);
  return {mix(block.part0, Permute(kBeside[0], first), 0),
          mix(block.part1, Permute(kBeside[1], middle), 1),
          mix(block.part2, Permute(kBeside[2], last), 2)};
}

// Sepia takes 128 off all bytes by turning their top bit: the weights may then use the whole range
// of a byte and no sum leaves 16 bits.
class SepiaTone {
 public:
  explicit SepiaTone(int keep)
      : evenMix_(Weights(keep, 255 - keep)), oddMix_(Weights(255 - keep, keep)) {
    const int fade = 255 - keep;
    // The weighted shift, and what takes a sum that is 255 x 128 too low to 32768 too low: the
    // limits of a lane with sign are then 0 and 65535. The 1 belongs to the division.
    const auto offset = [fade](int shift) { return static_cast<short>(shift * fade - 128 + 1); };
    const __m512i offsets =
        _mm512_zextsi128_si512(_mm_setr_epi16(offset(-55), offset(-13), offset(49), 0, 0, 0, 0, 0));
    for (int i = 0; i < 3; ++i) offsets_[i] = Permute(kChannelOfLane[i], offsets);
  }

  [[gnu::always_inline]] Block operator()(const Block& block) const {
    const Block centred = {Centre(block.part0), Centre(block.part1), Centre(block.part2)};
    return ChangeByValue(centred, Lightness, [this](__m512i part, __m512i beside, int number) {
      const __m512i even =
          Toned(evenMix_, _mm512_mask_mov_epi8(part, kOddBytes, beside), offsets_[number]);
      const __m512i odd = Toned(oddMix_, _mm512_mask_mov_epi8(part, kEvenBytes, beside),
                                offsets_[(number + 1) % 3]);
      return _mm512_mask_mov_epi8(odd, kEvenBytes, _mm512_srli_epi16(even, 8));
    });
  }

 private:
  static __m512i Centre(__m512i bytes) { return _mm512_xor_si512(bytes, Bytes(128)); }

  // The weights sum to 256: the upper byte is the lightness, 128 off as well.
  static __m512i Lightness(__m512i greenBlue, __m512i redTwice) {
    return _mm512_add_epi16(_mm512_maddubs_epi16(Weights(151, 28), greenBlue),
                            _mm512_maddubs_epi16(Weights(77, 0), redTwice));
  }

  // The upper byte of (v + v / 256) is (v - 1) / 255, for all v of 16 bits above 0; 0 gives 0, and
  // what is limited gives 255.
  static __m512i Toned(__m512i mix, __m512i pairs, __m512i offset) {
    const __m512i sum = _mm512_adds_epi16(_mm512_maddubs_epi16(mix, pairs), offset);
    const __m512i v = _mm512_xor_si512(sum, Words(0x8000));
    return _mm512_adds_epu16(v, _mm512_srli_epi16(v, 8));
  }

  __m512i evenMix_, oddMix_;
  __m512i offsets_[3];
};

void SepiaAvx512(std::uint8_t* colour, int width, std::uint8_t keep) {
  ChangeRow(colour, width, SepiaTone(keep));
}

class GreyMix {
 public:
  explicit GreyMix(int percent)
      : evenMix_(Weights(100 - percent, percent)), oddMix_(Weights(percent, 100 - percent)) {}

  [[gnu::always_inline]] Block operator()(const Block& block) const {
    return ChangeByValue(block, Grey, [this](__m512i part, __m512i beside, int) {
      const __m512i even =
          EighthsOfPercent(_mm512_mask_mov_epi8(part, kOddBytes, beside), evenMix_);
      const __m512i odd = EighthsOfPercent(_mm512_mask_mov_epi8(part, kEvenBytes, beside), oddMix_);
      return _mm512_mask_mov_epi8(_mm512_slli_epi16(odd, 5), kEvenBytes,
                                  _mm512_srli_epi16(even, 3));
    });
  }

 private:
  // (71 B + 707 G + 222 R) / 1000 = (sum / 8) / 125. The sum needs 18 bits, its eighth 15: the
  // multiples of 8 in the weights are divided beforehand, the rest of the sum apart. 33555 / 2^22
  // is close enough to 1 / 125 for any eighth; the shift leaves the result in the upper byte.
  static __m512i Grey(__m512i greenBlue, __m512i redTwice) {
    const __m512i eighths = _mm512_add_epi16(_mm512_maddubs_epi16(greenBlue, Weights(88, 8)),
                                             _mm512_maddubs_epi16(redTwice, Weights(27, 0)));
    const __m512i rest = _mm512_add_epi16(_mm512_maddubs_epi16(greenBlue, Weights(3, 7)),
                                          _mm512_maddubs_epi16(redTwice, Weights(6, 0)));
    const __m512i eighth = _mm512_add_epi16(eighths, _mm512_srli_epi16(rest, 3));
    return _mm512_slli_epi16(_mm512_mulhi_epu16(eighth, Words(33555)), 2);
  }

  // Eight times the mixed byte and a rest: 5243 / 2^19 is close enough to 1 / 100 for sums up to
  // 25500.
  static __m512i EighthsOfPercent(__m512i pairs, __m512i mix) {
    return _mm512_mulhi_epu16(_mm512_maddubs_epi16(pairs, mix), Words(5243));
  }

  __m512i evenMix_, oddMix_;
};

void BlackWhiteAvx512(std::uint8_t* colour, int width, int percent) {
  if (percent < 0 || percent > 100) return BlackWhite(colour, width, percent);
  ChangeRow(colour, width, GreyMix(percent));
}

// Three bytes repeated over a block.
Block Repeat(int blue, int green, int red) {
  const __m512i bytes = _mm512_zextsi128_si512(_mm_cvtsi32_si128(blue | green << 8 | red << 16));
  return {Permute(kChannelOfByte[0], bytes), Permute(kChannelOfByte[1], bytes),
          Permute(kChannelOfByte[2], bytes)};
}

void ShiftColoursAvx512(std::uint8_t* colour, int width, const ColourOffsets& offsets) {
  const auto above = [](int offset) { return offset > 0 ? offset : 0; };
  const Block raise = Repeat(above(offsets.blue), above(offsets.green), above(offsets.red));
  const Block lower = Repeat(above(-offsets.blue), above(-offsets.green), above(-offsets.red));
  const auto shift = [](__m512i bytes, __m512i up, __m512i down) {
    return _mm512_subs_epu8(_mm512_adds_epu8(bytes, up), down);
  };
  ChangeRow(colour, width, [&](const Block& block) -> Block {
    return {shift(block.part0, raise.part0, lower.part0),
            shift(block.part1, raise.part1, lower.part1),
            shift(block.part2, raise.part2, lower.part2)};
  });
}

// The pixel of each byte of a part.
constexpr Permutation PixelsOf(int part) {
  Permutation p = {};
  for (int j = 0; j < 64; ++j) p.from[j] = static_cast<std::uint8_t>((64 * part + j) / 3);
  return p;
}
constexpr Permutation kPixelOfByte[] = {PixelsOf(0), PixelsOf(1), PixelsOf(2)};

// A background that nothing shines through: all sums are parts of 255, and no mask is left.
class OpaqueFill {
 public:
  explicit OpaqueFill(Colour fill) : fills(Repeat(fill.blue, fill.green, fill.red)) {}

  [[gnu::always_inline]] void ChangeBlock(std::uint8_t* colour, std::uint8_t* mask) const {
    const __m512i masks = _mm512_loadu_si512(mask);
    if (_mm512_test_epi8_mask(masks, masks) == 0) return;
    kernels::ChangeBlock(colour, [&](const Block& block) -> Block {
      return {Mixed(block.part0, fills.part0, Permute(kPixelOfByte[0], masks)),
              Mixed(block.part1, fills.part1, Permute(kPixelOfByte[1], masks)),
              Mixed(block.part2, fills.part2, Permute(kPixelOfByte[2], masks))};
    });
    _mm512_storeu_si512(mask, _mm512_setzero_si512());
  }

 private:
  [[gnu::always_inline]] static __m512i Mixed(__m512i bytes, __m512i fill, __m512i masks) {
    const __m512i kept = _mm512_xor_si512(masks, Bytes(255));
    // 128 off, as the products take one factor with a sign.
    const __m512i shown = _mm512_xor_si512(bytes, Bytes(128));
    const __m512i laid = _mm512_xor_si512(fill, Bytes(128));
    return _mm512_packus_epi16(
        Part255(_mm512_unpacklo_epi8(kept, masks), _mm512_unpacklo_epi8(shown, laid)),
        Part255(_mm512_unpackhi_epi8(kept, masks), _mm512_unpackhi_epi8(shown, laid)));
  }

  // With 1 more than the sum, which is 128 x 255 too low, the quotient is exact.
  [[gnu::always_inline]] static __m512i Part255(__m512i weights, __m512i pairs) {
    const __m512i sum =
        _mm512_add_epi16(_mm512_maddubs_epi16(weights, pairs), Words(128 * 255 + 1));
    return _mm512_srli_epi16(_mm512_add_epi16(sum, _mm512_srli_epi16(sum, 8)), 8);
  }

  Block fills;
};

void PutBackgroundAvx512(std::uint8_t* colour, std::uint8_t* mask, int width, Colour background,
                         int percent) {
  if (percent != 0) return PutBackgroundLoop(colour, mask, width, background, percent);
  const OpaqueFill fill(background);
  for (; width >= kPixels; width -= kPixels, colour += kBlockBytes, mask += kPixels) {
    Prefetch(colour);
    fill.ChangeBlock(colour, mask);
  }
  MixRow(colour, mask, width, background, OpaqueBackground{});
}

void InvertAvx512(std::uint8_t* bytes, std::size_t count, int, const ByteTable& table) {
  ByteTableKernels::Avx512().mapBytes(bytes, bytes, count, table);
}

void FadeAvx512(std::uint8_t* mask, std::size_t count, std::uint8_t, const ByteTable& table) {
  ByteTableKernels::Avx512().mapBytes(mask, mask, count, table);
}

}  // namespace

const PointKernelTable& PointKernelTable::Avx512() {
  static constexpr PointKernelTable kTable = {
      SepiaAvx512, BlackWhiteAvx512, ShiftColoursAvx512, InvertAvx512,
      FadeAvx512,  InvertMaskLoop,   PutBackgroundAvx512};
  return kTable;
}

}  // namespace kernels
