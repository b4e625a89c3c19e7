// Loops that the compiler widens by itself: every file that includes this has a copy of its own,
// compiled for the processors of that file.
//
// Floats hold whole numbers here and may be divided: for n >= 0 and d > 0 with n + d below 2^24 the
// quotient lies below the next whole number q by at least 1 / d, and rounding can bridge q / 2^24
// at most, which is less, as q * d <= n + d. So the truncated quotient is exact.
#pragma once

#include <cstddef>
#include <cstdint>

#include "filters/pixels/PointKernels.h"

namespace kernels {
namespace {

constexpr int kMixedPixels = 32;  // of a block
constexpr int kMixedBytes = 3 * kMixedPixels;

// x / 100 and x / 255, truncated: exact for whole numbers of up to 16 bits, as the half that is
// added is far more than what rounding takes.
[[gnu::always_inline]] inline float Hundredth(float x) {
  return static_cast<float>(static_cast<int>((x + 0.5f) * (1.0f / 100)));
}
[[gnu::always_inline]] inline float Part255(float x) {
  return static_cast<float>(static_cast<int>((x + 0.5f) * (1.0f / 255)));
}

// Each mask three times, once for each channel of its pixel.
inline void SpreadMasks(std::uint8_t* spread, const std::uint8_t* mask) {
  for (int x = 0; x < kMixedPixels; ++x) {
    spread[3 * x] = spread[3 * x + 1] = spread[3 * x + 2] = mask[x];
  }
}

// What the masks of a block are, where all are alike.
enum class BlockMasks { Mixed, AllOpaque, AllNothing };
inline BlockMasks Look(const std::uint8_t* mask) {
  std::uint64_t words[kMixedPixels / 8];
  __builtin_memcpy(words, mask, sizeof words);
  if ((words[0] | words[1] | words[2] | words[3]) == 0) return BlockMasks::AllOpaque;
  const std::uint64_t both = words[0] & words[1] & words[2] & words[3];
  return both == ~std::uint64_t{0} ? BlockMasks::AllNothing : BlockMasks::Mixed;
}

// How a pixel of mask m is mixed: (fill * Fill + colour * Keep) / Whole, with sums below 2^23, and
// its new mask.
struct MaskInversion {
  static constexpr bool kKeepsOpaque = false;
  // So light that it counts only where there is no other weight: such a pixel keeps its colour.
  static constexpr float kLeast = 1.0f / (1 << 30);

  float percent;
  float Fill(float m) const { return m * percent; }
  float Keep(float m) const { return (255 - m) * (100 - percent) + kLeast; }
  float Whole(float m) const { return Fill(m) + Keep(m); }
  float Mask(float m) const { return Hundredth((255 - m) * percent + (100 - percent) * m); }
};

// Of a background whose bare mask is `level`, 0..254.
struct BackgroundMix {
  static constexpr bool kKeepsOpaque = true;
  float level;
  float Fill(float m) const { return m; }
  float Keep(float m) const { return 255 - m; }
  float Whole(float m) const { return 255 - Mask(m); }
  float Mask(float m) const { return Part255(m * level); }
};

template <class Mix>
inline void MixBlock(std::uint8_t* colour, std::uint8_t* mask, const std::uint8_t* fills,
                     const Mix& mix) {
  if (Mix::kKeepsOpaque && Look(mask) == BlockMasks::AllOpaque) return;
  std::uint8_t masks[kMixedBytes];
  SpreadMasks(masks, mask);
  for (int i = 0; i < kMixedBytes; ++i) {
    const float m = masks[i];
    const float sum =
        static_cast<float>(fills[i]) * mix.Fill(m) + static_cast<float>(colour[i]) * mix.Keep(m);
    colour[i] = static_cast<std::uint8_t>(static_cast<int>(sum / mix.Whole(m)));
  }
  for (int x = 0; x < kMixedPixels; ++x) {
    mask[x] = static_cast<std::uint8_t>(static_cast<int>(mix.Mask(mask[x])));
  }
}

// A background that nothing shines through: all sums are parts of 255, and no mask is left.
struct OpaqueBackground {};

inline void MixBlock(std::uint8_t* colour, std::uint8_t* mask, const std::uint8_t* fills,
                     const OpaqueBackground&) {
  const BlockMasks masksAre = Look(mask);
  if (masksAre == BlockMasks::AllOpaque) return;
  if (masksAre == BlockMasks::AllNothing) {
    __builtin_memcpy(colour, fills, kMixedBytes);
    __builtin_memset(mask, 0, kMixedPixels);
    return;
  }
  std::uint8_t masks[kMixedBytes];
  SpreadMasks(masks, mask);
  for (int i = 0; i < kMixedBytes; ++i) {
    const std::uint16_t m = masks[i];
    const auto sum = static_cast<std::uint16_t>(fills[i] * m + colour[i] * (255 - m) + 1);
    // A 255th of the sum before the 1 was added, truncated: exact up to 255 x 255.
    colour[i] = static_cast<std::uint8_t>(static_cast<std::uint16_t>(sum + (sum >> 8)) >> 8);
  }
  __builtin_memset(mask, 0, kMixedPixels);
}

// The last pixels go through a block aside.
template <class Mix>
inline void MixRow(std::uint8_t* colour, std::uint8_t* mask, int width, Colour fill,
                   const Mix& mix) {
  std::uint8_t fills[kMixedBytes];
  for (int i = 0; i < kMixedBytes; i += 3) {
    fills[i] = fill.blue;
    fills[i + 1] = fill.green;
    fills[i + 2] = fill.red;
  }
  for (; width >= kMixedPixels; width -= kMixedPixels) {
    // The processor's own look-ahead stops at each page. Behind the row it does no harm.
    __builtin_prefetch(colour + 3072, 1);
    __builtin_prefetch(colour + 3072 + 64, 1);
    __builtin_prefetch(mask + 1024, 1);
    MixBlock(colour, mask, fills, mix);
    colour += kMixedBytes;
    mask += kMixedPixels;
  }
  if (width <= 0) return;
  const auto pixels = static_cast<std::size_t>(width);
  std::uint8_t lastColours[kMixedBytes] = {};
  std::uint8_t lastMasks[kMixedPixels] = {};
  __builtin_memcpy(lastColours, colour, 3 * pixels);
  __builtin_memcpy(lastMasks, mask, pixels);
  MixBlock(lastColours, lastMasks, fills, mix);
  __builtin_memcpy(colour, lastColours, 3 * pixels);
  __builtin_memcpy(mask, lastMasks, pixels);
}

inline void InvertMaskLoop(const MaskedRow& to, const GivenMaskedRow& from, int width, Colour fill,
                           int percent) {
  if (percent < 0 || percent > 100) return InvertMask(to, from, width, fill, percent);
  CopyMaskedRow(to, from, width);
  MixRow(to.colour, to.mask, width, fill, MaskInversion{static_cast<float>(percent)});
}

inline void PutBackgroundLoop(const MaskedRow& to, const GivenMaskedRow& from, int width,
                              Colour background, int percent) {
  if (percent < 0 || percent >= 100) return PutBackground(to, from, width, background, percent);
  CopyMaskedRow(to, from, width);
  const int level = percent * 255 / 100;
  if (level == 0) return MixRow(to.colour, to.mask, width, background, OpaqueBackground{});
  const auto behind = [level](int channel) {
    return static_cast<std::uint8_t>(channel * (255 - level) / 255);
  };
  MixRow(to.colour, to.mask, width,
         {behind(background.blue), behind(background.green), behind(background.red)},
         BackgroundMix{static_cast<float>(level)});
}

// 5243 / 2^19 is close enough to 1 / 100 for sums up to 25500.
inline void InvertLoop(std::uint8_t* bytes, std::size_t count, int percent) {
  if (percent < 0 || percent > 100) return Invert(bytes, count, percent);
  const auto whole = static_cast<std::uint16_t>(255 * percent);
  const auto share = static_cast<std::uint16_t>(100 - 2 * percent);  // wraps; the sum comes right
  for (std::size_t i = 0; i < count; ++i) {
    const auto sum = static_cast<std::uint16_t>(whole + share * bytes[i]);
    const auto eighths = static_cast<std::uint16_t>(sum * 5243u >> 16);
    bytes[i] = static_cast<std::uint8_t>(eighths >> 3);
  }
}

inline void FadeLoop(std::uint8_t* mask, std::size_t count, std::uint8_t keep) {
  for (std::size_t i = 0; i < count; ++i) {
    const auto opaque = static_cast<std::uint16_t>((255 - mask[i]) * keep);
    mask[i] = static_cast<std::uint8_t>(255 - opaque / 255);
  }
}

}  // namespace
}  // namespace kernels
