// Point kernels for AVX2: a block is taken apart into channels.
#include "filters/pixels/PointVectorLoops.h"

namespace kernels {
namespace {

// A plane out of the bytes of two planes side by side, in 16-bit lanes.
template <class Change>
[[gnu::always_inline]] inline Bytes ChangePairs(Bytes first, Bytes second, const Change& change) {
  return Pack(change(UnpackLow(first, second)), change(UnpackHigh(first, second)));
}

// The same with a plane beside the first two, doubled.
template <class Change>
[[gnu::always_inline]] inline Bytes ChangePairs(Bytes first, Bytes second, Bytes third,
                                                const Change& change) {
  return Pack(change(UnpackLow(first, second), UnpackLow(third, third)),
              change(UnpackHigh(first, second), UnpackHigh(third, third)));
}

class SepiaTone {
 public:
  explicit SepiaTone(int keep) : mix_(Weights(keep, 255 - keep)) {
    for (int i = 0; i < 3; ++i) {
      offsets_[i] = All<Shorts>(SepiaOffset(kSepiaShift[i], 255 - keep));
    }
  }

  [[gnu::always_inline]] Block operator()(const Block& block) const {
    const Planes planes = Split(block);
    const Planes centred = {Centred(planes.blue), Centred(planes.green), Centred(planes.red)};
    const Bytes lightness = ChangePairs(
        centred.green, centred.blue, centred.red,
        [](Bytes greenBlue, Bytes redTwice) { return Lightness256(greenBlue, redTwice) >> 8; });
    return Join({Toned(centred.blue, lightness, offsets_[0]),
                 Toned(centred.green, lightness, offsets_[1]),
                 Toned(centred.red, lightness, offsets_[2])});
  }

 private:
  [[gnu::always_inline]] Bytes Toned(Bytes channel, Bytes lightness, Shorts offset) const {
    return ChangePairs(channel, lightness, [&](Bytes pairs) {
      const Shorts sum = AddLimited((Shorts)MultiplyPairs(mix_, pairs), offset);
      return DivideBy255((Words)sum ^ All<Words>(0x8000));
    });
  }

  // Exact for all 16-bit values.
  static Words DivideBy255(Words value) { return MultiplyHigh(value, All<Words>(0x8081)) >> 7; }

  Bytes mix_;
  Shorts offsets_[3];
};

void SepiaAvx2(std::uint8_t* colour, int width, std::uint8_t keep) {
  ChangeRow(colour, width, SepiaTone(keep));
}

class GreyMix {
 public:
  explicit GreyMix(int percent) : mix_(Weights(100 - percent, percent)) {}

  [[gnu::always_inline]] Block operator()(const Block& block) const {
    const Planes planes = Split(block);
    const Bytes grey = ChangePairs(
        planes.green, planes.blue, planes.red,
        [](Bytes greenBlue, Bytes redTwice) { return Grey64(greenBlue, redTwice) >> 6; });
    return Join({Mixed(planes.blue, grey), Mixed(planes.green, grey), Mixed(planes.red, grey)});
  }

 private:
  [[gnu::always_inline]] Bytes Mixed(Bytes channel, Bytes grey) const {
    return ChangePairs(channel, grey,
                       [this](Bytes pairs) { return EighthsOfPercent(pairs, mix_) >> 3; });
  }

  Bytes mix_;
};

void BlackWhiteAvx2(std::uint8_t* colour, int width, int percent) {
  if (percent < 0 || percent > 100) return BlackWhite(colour, width, percent);
  ChangeRow(colour, width, GreyMix(percent));
}

}  // namespace

const PointKernelTable& PointKernelTable::Avx2() {
  static constexpr PointKernelTable kTable = {
      SepiaAvx2,    BlackWhiteAvx2,     ShiftColoursLoop,     InvertInBlocks,
      FadeInBlocks, InvertMaskInBlocks, PutBackgroundInBlocks};
  return kTable;
}

}  // namespace kernels
