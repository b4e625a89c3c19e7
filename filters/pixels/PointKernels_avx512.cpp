// Point kernels for AVX-512 with byte permutes (VBMI), which bring the channels of a pixel together
// where they lie in the block.
#include "filters/pixels/PointVectorLoops.h"

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

constexpr Permutation kGreenBlue[] = {Pairs(0, 1, 0), Pairs(1, 1, 0)};
constexpr Permutation kRedTwice[] = {Pairs(0, 2, 2), Pairs(1, 2, 2)};
constexpr Permutation kBeside[] = {Beside(0), Beside(1), Beside(2)};

// The channel of every second byte, starting with `first`, one a 16-bit lane.
struct alignas(64) LaneChannels {
  std::uint16_t channel[32];
  operator Bits() const { return _mm512_load_si512(channel); }
};
constexpr LaneChannels ChannelsFrom(int first) {
  LaneChannels lanes = {};
  for (int i = 0; i < 32; ++i) lanes.channel[i] = static_cast<std::uint16_t>((first + 2 * i) % 3);
  return lanes;
}
constexpr LaneChannels kChannelOfLane[] = {ChannelsFrom(0), ChannelsFrom(1), ChannelsFrom(2)};

// The lane of every channel.
[[gnu::always_inline]] inline Shorts Permute(const LaneChannels& how, Shorts lanes) {
  return (Shorts)_mm512_maskz_permutexvar_epi16(kAll32, how, (Bits)lanes);
}
// The upper half of `first` and the lower half of `last`.
[[gnu::always_inline]] inline Words Middle(Words first, Words last) {
  return (Words)_mm512_maskz_shuffle_i64x2(kAll8, (Bits)first, (Bits)last, _MM_SHUFFLE(1, 0, 3, 2));
}
// The bytes of `odd` in their places among those of `even`, and the other way round.
template <class Vector>
[[gnu::always_inline]] inline Bytes WithOdd(Vector even, Vector odd) {
  return (Bytes)_mm512_mask_mov_epi8((Bits)even, kOddBytes, (Bits)odd);
}
template <class Vector>
[[gnu::always_inline]] inline Bytes WithEven(Vector odd, Vector even) {
  return (Bytes)_mm512_mask_mov_epi8((Bits)odd, kEvenBytes, (Bits)even);
}

// `value` makes one number of a pixel in the upper byte of a 16-bit lane, out of its pairs (green,
// blue) and (red, red). `mix` makes a part of the block of the part, its numbers and its place.
template <class Value, class Mix>
[[gnu::always_inline]] inline Block ChangeByValue(const Block& block, const Value& value,
                                                  const Mix& mix) {
  const auto pairs = [&](const Permutation(&how)[2], int half) {
    return half == 0 ? Permute(how[0], block.part0, block.part1)
                     : Permute(how[1], block.part1, block.part2);
  };
  const Words first = value(pairs(kGreenBlue, 0), pairs(kRedTwice, 0));
  const Words last = value(pairs(kGreenBlue, 1), pairs(kRedTwice, 1));
  const Words middle = Middle(first, last);
  return {mix(block.part0, Permute(kBeside[0], (Bytes)first), 0),
          mix(block.part1, Permute(kBeside[1], (Bytes)middle), 1),
          mix(block.part2, Permute(kBeside[2], (Bytes)last), 2)};
}

class SepiaTone {
 public:
  explicit SepiaTone(int keep)
      : evenMix_(Weights(keep, 255 - keep)), oddMix_(Weights(255 - keep, keep)) {
    Shorts offsets = {};
    for (int i = 0; i < 3; ++i) {
      // The 1 belongs to the division.
      offsets[i] = static_cast<std::int16_t>(SepiaOffset(kSepiaShift[i], 255 - keep) + 1);
    }
    for (int i = 0; i < 3; ++i) offsets_[i] = Permute(kChannelOfLane[i], offsets);
  }

  [[gnu::always_inline]] Block operator()(const Block& block) const {
    const Block centred = {Centred(block.part0), Centred(block.part1), Centred(block.part2)};
    return ChangeByValue(centred, Lightness256, [this](Bytes part, Bytes beside, int number) {
      const Words even = Toned(evenMix_, WithOdd(part, beside), offsets_[number]);
      const Words odd = Toned(oddMix_, WithEven(part, beside), offsets_[(number + 1) % 3]);
      return WithEven(odd, even >> 8);
    });
  }

 private:
  // The upper byte of (v + v / 256) is (v - 1) / 255, for all v of 16 bits above 0; 0 gives 0, and
  // what is limited gives 255.
  [[gnu::always_inline]] static Words Toned(Bytes mix, Bytes pairs, Shorts offset) {
    const Shorts sum = AddLimited((Shorts)MultiplyPairs(mix, pairs), offset);
    const Words v = (Words)sum ^ All<Words>(0x8000);
    return AddLimited(v, v >> 8);
  }

  Bytes evenMix_, oddMix_;
  Shorts offsets_[3];
};

void SepiaAvx512(std::uint8_t* colour, int width, std::uint8_t keep) {
  ChangeRow(colour, width, SepiaTone(keep));
}

class GreyMix {
 public:
  explicit GreyMix(int percent)
      : evenMix_(Weights(100 - percent, percent)), oddMix_(Weights(percent, 100 - percent)) {}

  [[gnu::always_inline]] Block operator()(const Block& block) const {
    // The shift leaves the grey in the upper byte.
    const auto grey = [](Bytes greenBlue, Bytes redTwice) {
      return Grey64(greenBlue, redTwice) << 2;
    };
    return ChangeByValue(block, grey, [this](Bytes part, Bytes beside, int) {
      const Words even = EighthsOfPercent(WithOdd(part, beside), evenMix_);
      const Words odd = EighthsOfPercent(WithEven(part, beside), oddMix_);
      return WithEven(odd << 5, even >> 3);
    });
  }

 private:
  Bytes evenMix_, oddMix_;
};

void BlackWhiteAvx512(std::uint8_t* colour, int width, int percent) {
  if (percent < 0 || percent > 100) return BlackWhite(colour, width, percent);
  ChangeRow(colour, width, GreyMix(percent));
}

}  // namespace

const PointKernelTable& PointKernelTable::Avx512() {
  static constexpr PointKernelTable kTable = {
      SepiaAvx512,  BlackWhiteAvx512,   ShiftColoursLoop,     InvertInBlocks,
      FadeInBlocks, InvertMaskInBlocks, PutBackgroundInBlocks};
  return kTable;
}

}  // namespace kernels
