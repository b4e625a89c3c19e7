#include "filters/pixels/LuminanceKernels.h"

#include <cmath>
#include <cstdlib>

#include "base/Arithmetic.h"
#include "base/Rows.h"

namespace kernels {
namespace {

using base::kBlue;
using base::kBytesPerPixel;
using base::kGreen;
using base::kRed;

std::uint8_t LuminanceAt(const std::uint8_t* pixel) {
  return static_cast<std::uint8_t>((151 * pixel[kGreen] + 77 * pixel[kRed] + 28 * pixel[kBlue]) >>
                                   8);
}

std::uint8_t LimitedByte(float value) {
  return static_cast<std::uint8_t>(value < 0.0f ? 0.0f : value > 255.0f ? 255.0f : value);
}

std::uint8_t Scaled(std::uint8_t level, double factor) {
  const double value = level * factor + 0.5;
  return static_cast<std::uint8_t>(value < 255.0 ? value : 255.0);
}

std::uint8_t Moved(std::uint8_t level, int grey, const GreyMove& move) {
  const std::int64_t distance = std::abs(grey - level);
  return base::LowByte(level - distance * move.taken[level] / 85);
}

}  // namespace

void Luminance(std::uint8_t* to, const std::uint8_t* colour, int width) {
  for (int x = 0; x < width; ++x) to[x] = LuminanceAt(colour + base::ColourOffset(x));
}

void ReplaceLuminance(std::uint8_t* colour, int width, const ByteTable& table) {
  for (int x = 0; x < width; ++x, colour += kBytesPerPixel) {
    const float r = colour[kRed];
    const float g = colour[kGreen];
    const float b = colour[kBlue];
    const float y = table[LuminanceAt(colour)];
    const float i = 0.596f * r - 0.275f * g - 0.321f * b;
    const float q = 0.212f * r - 0.523f * g + 0.311f * b;
    colour[kRed] = LimitedByte(y + 0.955688f * i + 0.619858f * q);
    colour[kGreen] = LimitedByte(y - 0.271582f * i - 0.646874f * q);
    colour[kBlue] = LimitedByte(y - 1.108177f * i + 1.705065f * q);
  }
}

void ScaleByLuminance(std::uint8_t* colour, int width, const LuminanceFactors& factors) {
  for (int x = 0; x < width; ++x, colour += kBytesPerPixel) {
    const double factor = factors[LuminanceAt(colour)];
    for (const int channel : {kBlue, kGreen, kRed})
      colour[channel] = Scaled(colour[channel], factor);
  }
}

GreyMove BuildGreyMove(double exponent) {
  GreyMove move;
  move.raises = exponent < 1.0;
  for (std::size_t i = 0; i < move.taken.size(); ++i) {
    const auto level = static_cast<double>(i);
    const std::int32_t taken =
        base::TruncateToInt32(level - 255.0 * std::pow(level / 255.0, exponent));
    const std::int64_t size = move.raises ? -std::int64_t{taken} : taken;
    move.taken[i] = taken;
    move.fitsBytes = move.fitsBytes && size >= 0 && size <= 255;
    move.size[i] = base::LowByte(size);
  }
  return move;
}

void MoveFromGrey(std::uint8_t* colour, int width, const GreyMoves& moves) {
  for (int x = 0; x < width; ++x, colour += kBytesPerPixel) {
    const int grey = (colour[kBlue] + colour[kGreen] + colour[kRed]) / 3;
    colour[kBlue] = Moved(colour[kBlue], grey, moves.blue);
    colour[kGreen] = Moved(colour[kGreen], grey, moves.green);
    colour[kRed] = Moved(colour[kRed], grey, moves.red);
  }
}

const LuminanceKernelTable& LuminanceKernelTable::Plain() {
  static constexpr LuminanceKernelTable kPlain = {Luminance, ReplaceLuminance, ScaleByLuminance,
                                                  MoveFromGrey};
  return kPlain;
}

}  // namespace kernels
