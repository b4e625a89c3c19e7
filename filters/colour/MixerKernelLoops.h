// The mixer over vectors of any width.
//
// Sums are whole numbers of 32 bits. For weights of up to kMostWeight altogether they stay below
// 2^21, and a half is far more than what the product with the reciprocal rounds away in floats: it
// truncates to the exact quotient.
#pragma once

#include <cstdint>

#include "filters/colour/MixerKernels.h"
#include "filters/pixels/simd/PixelBlocks.h"

namespace kernels {
namespace {

constexpr std::int64_t kMostWeight = 8000;
constexpr std::int64_t kMostConstant = 1 << 22;  // moves any such quotient beyond 0 or 255

constexpr std::int64_t Size(std::int64_t value) {
  return value < 0 ? -value : value;
}

inline bool Fits(const ChannelRecipe& recipe) {
  return Size(recipe.blue) + Size(recipe.green) + Size(recipe.red) <= kMostWeight &&
         Size(recipe.constant) <= kMostConstant;
}

inline bool Same(const ChannelRecipe& a, const ChannelRecipe& b) {
  return a.blue == b.blue && a.green == b.green && a.red == b.red && a.divisor == b.divisor &&
         a.constant == b.constant;
}

class ChannelMix {
 public:
  explicit ChannelMix(const ChannelRecipe& recipe)
      : ofBlueGreen_(Weights(recipe.blue, recipe.green)),
        ofRed_(Weights(recipe.red, 0)),
        share_(All<Floats>(1.0f / static_cast<float>(recipe.divisor))),
        constant_(All<Ints>(recipe.constant)) {}

  [[gnu::always_inline]] Bytes operator()(const BytePairs& blueGreen, const BytePairs& red) const {
    return PackQuarters([&](int i) __attribute__((always_inline)) {
      return Quotient(MultiplyPairs(blueGreen.quarters[i], ofBlueGreen_) +
                      MultiplyPairs(red.quarters[i], ofRed_)) +
             constant_;
    });
  }

 private:
  static Shorts Weights(int even, int odd) {
    return (Shorts)All<Ints>(odd * 65536 + (even & 65535));
  }

  // A half of the sum's own sign is added.
  [[gnu::always_inline]] Ints Quotient(Ints sum) const {
    const auto half = (Floats)((sum & All<Ints>(-0x7FFFFFFF - 1)) | (Ints)All<Floats>(0.5f));
    return __builtin_convertvector((__builtin_convertvector(sum, Floats) + half) * share_, Ints);
  }

  Shorts ofBlueGreen_, ofRed_;
  Floats share_;
  Ints constant_;
};

class Mixer {
 public:
  explicit Mixer(const Mixture& mixture)
      : blue_(mixture.blue),
        green_(mixture.green),
        red_(mixture.red),
        keepsBlue_(Same(mixture.blue, kKeepBlue)),
        keepsGreen_(Same(mixture.green, kKeepGreen)),
        keepsRed_(Same(mixture.red, kKeepRed)) {}

  [[gnu::always_inline]] Block operator()(const Block& block) const {
    const Planes old = Split(block);
    const BytePairs blueGreen = PairUp(old.blue, old.green);
    const BytePairs red = PairUp(old.red, Bytes{});
    return Join({keepsBlue_ ? old.blue : blue_(blueGreen, red),
                 keepsGreen_ ? old.green : green_(blueGreen, red),
                 keepsRed_ ? old.red : red_(blueGreen, red)});
  }

 private:
  ChannelMix blue_, green_, red_;
  bool keepsBlue_, keepsGreen_, keepsRed_;
};

class GreyMixer {
 public:
  explicit GreyMixer(const ChannelRecipe& recipe) : grey_(recipe) {}

  [[gnu::always_inline]] Block operator()(const Block& block) const {
    const Planes old = Split(block);
    const Bytes grey = grey_(PairUp(old.blue, old.green), PairUp(old.red, Bytes{}));
    return Join({grey, grey, grey});
  }

 private:
  ChannelMix grey_;
};

inline void MixLoop(std::uint8_t* colour, int width, const Mixture& mixture) {
  if (!Fits(mixture.blue) || !Fits(mixture.green) || !Fits(mixture.red)) {
    return MixChannels(colour, width, mixture);
  }
  if (Same(mixture.blue, mixture.green) && Same(mixture.blue, mixture.red)) {
    return ChangeRow(colour, width, GreyMixer(mixture.blue));
  }
  ChangeRow(colour, width, Mixer(mixture));
}

constexpr MixerKernels kMixerLoops = {MixLoop};

}  // namespace
}  // namespace kernels
