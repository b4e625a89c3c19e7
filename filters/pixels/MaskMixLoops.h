// Mixes of colours with a fill, by the masks of their pixels, over vectors of any width.
//
// Sums are whole numbers below 2^24, which floats hold. The quotient of two, at most 255, is worked
// out from the reciprocal of the divisor and the exact remainder that it leaves: it is exact where
// it is whole, and elsewhere rounded by 2^-17 at most, where the next whole number is 1 / 65025
// away at least.
#pragma once

#include <cstdint>

#include "filters/pixels/PointKernels.h"
#include "filters/pixels/simd/PixelBlocks.h"

namespace kernels {
namespace {

// A hundredth and a 255th, truncated, for numbers up to 25500 and 65025.
[[gnu::always_inline]] inline Words Hundredths(Words number) {
  return MultiplyHigh(number, All<Words>(5243)) >> 3;
}
[[gnu::always_inline]] inline Words PartsOf255(Words number) {
  return (number + 1 + ((number + 1) >> 8)) >> 8;
}

// What becomes of pixels of masks m: (fill * Fill + colour * Keep) / Whole, and their new masks.
class MaskInversionWeights {
 public:
  explicit MaskInversionWeights(int percent)
      : percent_(All<Words>(percent)), rest_(All<Words>(100 - percent)) {}

  [[gnu::always_inline]] Words Fill(Words m) const { return m * percent_; }
  // A pixel without any weight keeps its colour.
  [[gnu::always_inline]] Words Keep(Words m) const {
    const Words keep = (255 - m) * rest_;
    return keep - (Words)((Fill(m) | keep) == 0);
  }
  [[gnu::always_inline]] Words Whole(Words m) const { return Fill(m) + Keep(m); }
  [[gnu::always_inline]] Words Mask(Words m) const {
    return Hundredths((255 - m) * percent_ + m * rest_);
  }

 private:
  Words percent_, rest_;
};

// Of a background whose bare mask is `level`, 0..254.
class BackgroundWeights {
 public:
  explicit BackgroundWeights(int level) : level_(All<Words>(level)) {}

  [[gnu::always_inline]] Words Fill(Words m) const { return m; }
  [[gnu::always_inline]] Words Keep(Words m) const { return 255 - m; }
  [[gnu::always_inline]] Words Whole(Words m) const { return 255 - Mask(m); }
  [[gnu::always_inline]] Words Mask(Words m) const { return PartsOf255(m * level_); }

 private:
  Words level_;
};

// Divides sums of a quarter of a block, which float holds, by whole numbers.
class QuarterQuotient {
 public:
  [[gnu::always_inline]] explicit QuarterQuotient(Words whole)
      : whole_(__builtin_convertvector((Ints)whole, Floats)), reciprocal_(1.0f / whole_) {}

  [[gnu::always_inline]] Ints operator()(Ints sums) const {
    const Floats sum = __builtin_convertvector(sums, Floats);
    const Floats about = sum * reciprocal_;
    const Floats rest = MultiplyAdd(-about, whole_, sum);
    return __builtin_convertvector(MultiplyAdd(rest, reciprocal_, about), Ints);
  }

 private:
  Floats whole_, reciprocal_;
};

// A fill and a colour mixed by weights below 2^15.
class QuarterMix {
 public:
  [[gnu::always_inline]] QuarterMix(Words fillAndKeep, Words whole)
      : weights_((Shorts)fillAndKeep), quotient_(whole) {}

  [[gnu::always_inline]] Ints operator()(Shorts fillAndColour) const {
    return quotient_(MultiplyPairs(fillAndColour, weights_));
  }

 private:
  Shorts weights_;
  QuarterQuotient quotient_;
};

// By weights of 16 bits, whose products with a sign are 2^15 times the bytes too low.
class WideQuarterMix {
 public:
  [[gnu::always_inline]] WideQuarterMix(Words fillAndKeep, Words whole)
      : weights_((Shorts)(fillAndKeep ^ All<Words>(1 << 15))), quotient_(whole) {}

  [[gnu::always_inline]] Ints operator()(Shorts fillAndColour) const {
    const Ints bytes = MultiplyPairs(fillAndColour, All<Shorts>(1));
    return quotient_(MultiplyPairs(fillAndColour, weights_) + (bytes << 15));
  }

 private:
  Shorts weights_;
  QuarterQuotient quotient_;
};

// The weights of two halves of a block.
struct HalfWeights {
  Words fill, keep, whole;
};

template <class Quarter>
[[gnu::always_inline]] inline Planes MixPlanes(const Planes& fills, const Planes& planes,
                                               const HalfWeights& low, const HalfWeights& high) {
  const Words none = {};
  const Quarter quarters[] = {{UnpackLow(low.fill, low.keep), UnpackLow(low.whole, none)},
                              {UnpackHigh(low.fill, low.keep), UnpackHigh(low.whole, none)},
                              {UnpackLow(high.fill, high.keep), UnpackLow(high.whole, none)},
                              {UnpackHigh(high.fill, high.keep), UnpackHigh(high.whole, none)}};
  const auto mixed = [&](Bytes fill, Bytes channel) __attribute__((always_inline)) {
    const BytePairs pairs = PairUp(fill, channel);
    return PackQuarters([&](int i) __attribute__((always_inline)) {
      return quarters[i](pairs.quarters[i]);
    });
  };
  return {mixed(fills.blue, planes.blue), mixed(fills.green, planes.green),
          mixed(fills.red, planes.red)};
}

template <class Weights>
[[gnu::always_inline]] inline void MixBlock(Block& block, Bytes& masks, const Planes& fills,
                                            const Weights& weights) {
  const auto weightsOf = [&](Words m) __attribute__((always_inline)) {
    return HalfWeights{weights.Fill(m), weights.Keep(m), weights.Whole(m)};
  };
  const auto low = (Words)UnpackLow(masks, Bytes{});
  const auto high = (Words)UnpackHigh(masks, Bytes{});
  block = Join(MixPlanes<QuarterMix>(fills, Split(block), weightsOf(low), weightsOf(high)));
  masks = Pack(weights.Mask(low), weights.Mask(high));
}

[[gnu::always_inline]] inline Planes PlanesOf(Colour fill) {
  return {All<Bytes>(fill.blue), All<Bytes>(fill.green), All<Bytes>(fill.red)};
}

inline void InvertMaskInBlocks(const MaskedRow& to, const GivenMaskedRow& from, int width,
                               Colour fill, int percent) {
  if (percent < 0 || percent > 100) return InvertMask(to, from, width, fill, percent);
  const Planes fills = PlanesOf(fill);
  const MaskInversionWeights weights(percent);
  ChangeRowWithMasks(
      to, from, width, [&](Block & block, Bytes & masks) __attribute__((always_inline)) {
        MixBlock(block, masks, fills, weights);
      });
}

inline void PutBackgroundInBlocks(const MaskedRow& to, const GivenMaskedRow& from, int width,
                                  Colour background, int percent) {
  if (percent < 0 || percent >= 100) return PutBackground(to, from, width, background, percent);
  const int level = percent * 255 / 100;
  const auto behind = [level](int channel) {
    return static_cast<std::uint8_t>(channel * (255 - level) / 255);
  };
  const Planes fills =
      PlanesOf({behind(background.blue), behind(background.green), behind(background.red)});
  const BackgroundWeights weights(level);
  ChangeRowWithMasks(
      to, from, width, [&](Block & block, Bytes & masks) __attribute__((always_inline)) {
        if (IsAny(masks)) MixBlock(block, masks, fills, weights);
      });
}

}  // namespace
}  // namespace kernels
