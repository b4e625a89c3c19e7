#include "filters/pixels/PointKernels.h"

#include <algorithm>
#include <cstring>

#include "base/Arithmetic.h"
#include "base/Rows.h"

namespace kernels {
namespace {

using base::kBlue;
using base::kBytesPerPixel;
using base::kGreen;
using base::kRed;

constexpr bool IsPercentage(int percent) {
  return percent >= 0 && percent <= 100;
}

// The same value in the type that the sums of a loop need: 32 bits hold all sums of percentages
// within 0..100, 64 bits those of any percentage.
template <class Sum>
void BlackWhiteRow(std::uint8_t* colour, int width, Sum percent) {
  for (int x = 0; x < width; ++x, colour += kBytesPerPixel) {
    const int grey = (71 * colour[kBlue] + 707 * colour[kGreen] + 222 * colour[kRed]) / 1000;
    for (int channel = 0; channel < kBytesPerPixel; ++channel) {
      colour[channel] =
          static_cast<std::uint8_t>(((100 - percent) * colour[channel] + percent * grey) / 100);
    }
  }
}

// Adds `raise` and subtracts `lower`, limited to 0..255, in byte arithmetic alone.
inline std::uint8_t ShiftByte(std::uint8_t byte, std::uint8_t raise, std::uint8_t lower) {
  const auto raised =
      static_cast<std::uint8_t>(byte + std::min(raise, static_cast<std::uint8_t>(255 - byte)));
  return static_cast<std::uint8_t>(raised - std::min(lower, raised));
}

template <class Sum>
void InvertMaskRow(std::uint8_t* colour, std::uint8_t* mask, int width, Colour fill, Sum percent) {
  const Sum fills[] = {fill.blue, fill.green, fill.red};
  for (int x = 0; x < width; ++x, colour += kBytesPerPixel) {
    const Sum m = mask[x];
    const Sum filled = m * percent;
    const Sum kept = (100 - percent) * (255 - m);
    const Sum whole = filled + kept;
    if (whole == 0) {
      mask[x] = base::kNothing;
      continue;
    }
    for (int channel = 0; channel < kBytesPerPixel; ++channel) {
      colour[channel] =
          static_cast<std::uint8_t>((fills[channel] * filled + colour[channel] * kept) / whole);
    }
    mask[x] = static_cast<std::uint8_t>(((255 - m) * percent + (100 - percent) * m) / 100);
  }
}

// `level` is the mask of the bare background, at most 254: the mask that a pixel keeps stays below
// 255, so that no division is by 0.
template <class Sum>
void PutBackgroundRow(std::uint8_t* colour, std::uint8_t* mask, int width, Colour background,
                      Sum level) {
  const Sum behind[] = {background.blue * (255 - level) / 255,
                        background.green * (255 - level) / 255,
                        background.red * (255 - level) / 255};
  for (int x = 0; x < width; ++x, colour += kBytesPerPixel) {
    const Sum m = mask[x];
    const Sum kept = m * level / 255;
    for (int channel = 0; channel < kBytesPerPixel; ++channel) {
      colour[channel] = static_cast<std::uint8_t>(
          (colour[channel] * (255 - m) + m * behind[channel]) / (255 - kept));
    }
    mask[x] = static_cast<std::uint8_t>(kept);
  }
}

// A percentage on the scale of a byte, truncated; exact for any percentage.
constexpr std::int64_t ScaleToByte(int percent) {
  return std::int64_t{percent} * 255 / 100;
}

}  // namespace

void Sepia(std::uint8_t* colour, int width, std::uint8_t keep) {
  const int fade = 255 - keep;
  for (int x = 0; x < width; ++x, colour += kBytesPerPixel) {
    const int lightness = (151 * colour[kGreen] + 77 * colour[kRed] + 28 * colour[kBlue]) >> 8;
    const auto tone = [&](int channel, int shift) {
      const int mixed = ((lightness + shift) * fade + keep * colour[channel]) / 255;
      colour[channel] = static_cast<std::uint8_t>(std::clamp(mixed, 0, 255));
    };
    tone(kRed, 49);
    tone(kGreen, -13);
    tone(kBlue, -55);
  }
}

void Invert(std::uint8_t* bytes, std::size_t count, int percent) {
  const std::int64_t share = percent;
  for (std::size_t i = 0; i < count; ++i) {
    bytes[i] = base::LowByte(((255 - bytes[i]) * share + (100 - share) * bytes[i]) / 100);
  }
}

void Fade(std::uint8_t* mask, std::size_t count, std::uint8_t keep) {
  for (std::size_t i = 0; i < count; ++i) {
    mask[i] = static_cast<std::uint8_t>(255 - (255 - mask[i]) * keep / 255);
  }
}

void BlackWhite(std::uint8_t* colour, int width, int percent) {
  if (IsPercentage(percent)) {
    BlackWhiteRow<int>(colour, width, percent);
  } else {
    BlackWhiteRow<std::int64_t>(colour, width, percent);
  }
}

int ColourOffset(int percent) {
  return static_cast<int>(std::clamp<std::int64_t>(ScaleToByte(percent), -255, 255));
}

void ShiftColours(std::uint8_t* colour, int width, const ColourOffsets& offsets) {
  // 16 pixels a step: the pattern of three channels then fills whole vectors.
  constexpr std::size_t kStep = 16 * kBytesPerPixel;
  const int shifts[kBytesPerPixel] = {offsets.blue, offsets.green, offsets.red};
  std::uint8_t raise[kStep];
  std::uint8_t lower[kStep];
  for (std::size_t i = 0; i < kStep; ++i) {
    const int shift = shifts[i % kBytesPerPixel];
    raise[i] = base::ClampByte(shift);
    lower[i] = base::ClampByte(-shift);
  }
  std::size_t left = base::ColourBytes(width);
  for (; left >= kStep; left -= kStep, colour += kStep) {
    for (std::size_t i = 0; i < kStep; ++i) colour[i] = ShiftByte(colour[i], raise[i], lower[i]);
  }
  for (std::size_t i = 0; i < left; ++i) colour[i] = ShiftByte(colour[i], raise[i], lower[i]);
}

void MixColour(std::uint8_t* colour, int width, Colour mixed, int percent) {
  const std::int64_t share = percent;
  const std::int64_t added[] = {share * mixed.blue, share * mixed.green, share * mixed.red};
  for (int x = 0; x < width; ++x, colour += kBytesPerPixel) {
    for (int channel = 0; channel < kBytesPerPixel; ++channel) {
      colour[channel] = base::LowByte(((100 - share) * colour[channel] + added[channel]) / 100);
    }
  }
}

void CopyMaskedRow(const MaskedRow& to, const GivenMaskedRow& from, int width) {
  if (to.colour == from.colour || width < 1) return;
  std::memcpy(to.colour, from.colour, base::ColourBytes(width));
  std::memcpy(to.mask, from.mask, static_cast<std::size_t>(width));
}

void InvertMask(const MaskedRow& to, const GivenMaskedRow& from, int width, Colour fill,
                int percent) {
  CopyMaskedRow(to, from, width);
  if (IsPercentage(percent)) {
    InvertMaskRow<int>(to.colour, to.mask, width, fill, percent);
  } else {
    InvertMaskRow<std::int64_t>(to.colour, to.mask, width, fill, percent);
  }
}

void PutBackground(const MaskedRow& to, const GivenMaskedRow& from, int width, Colour background,
                   int percent) {
  CopyMaskedRow(to, from, width);
  const std::int64_t level = ScaleToByte(percent);
  if (level >= 255) return;
  if (level >= 0) {
    PutBackgroundRow<int>(to.colour, to.mask, width, background, static_cast<int>(level));
  } else {
    PutBackgroundRow<std::int64_t>(to.colour, to.mask, width, background, level);
  }
}

void PutBackgroundPixel(std::uint8_t* colour, std::uint8_t* mask, Colour background, int percent) {
  const std::int64_t level = ScaleToByte(percent);
  const std::int64_t m = *mask;
  if (m == base::kOpaque) return;
  const std::int64_t behinds[] = {background.blue, background.green, background.red};
  if (m == base::kNothing) {
    for (int c = 0; c < kBytesPerPixel; ++c) colour[c] = base::LowByte(behinds[c]);
    *mask = base::LowByte(level);
    return;
  }
  if (level == 255) return;
  const std::int64_t front = (255 - m) * 255;
  const std::int64_t behind = (255 - level) * m;
  for (int c = 0; c < kBytesPerPixel && front + behind != 0; ++c) {
    colour[c] = base::LowByte((front * colour[c] + behind * behinds[c]) / (front + behind));
  }
  *mask = base::LowByte(level * m / 255);
}

}  // namespace kernels
