#include "filters/colour/LightnessKernels.h"

#include <algorithm>
#include <array>
#include <bit>

#include "base/Arithmetic.h"
#include "base/Rows.h"

namespace kernels {
namespace {

using base::kBlue;
using base::kBytesPerPixel;
using base::kGreen;
using base::kRed;

double Limit(double value, double low, double high) {
  return value < low ? low : value > high ? high : value;
}

Colour FromHls(double hue, double lightness, double saturation) {
  Colour colour;
  HlsToRgb(hue, lightness, saturation, colour.red, colour.green, colour.blue);
  return colour;
}

double LightnessAt(const std::uint8_t* pixel) {
  return Lightness(pixel[kRed], pixel[kGreen], pixel[kBlue]);
}

struct Extremes {
  int low, high;
};

// As ints the compiler chooses without branches, which no processor could foresee in a noisy
// picture.
Extremes ExtremesAt(const std::uint8_t* pixel) {
  const int a = pixel[0];
  const int b = pixel[1];
  const int c = pixel[2];
  const int low = a < b ? a : b;
  const int high = a < b ? b : a;
  return {low < c ? low : c, high > c ? high : c};
}

// Each byte as a share of the full level.
constexpr std::array<double, 256> kLevels = [] {
  std::array<double, 256> levels = {};
  for (std::size_t c = 0; c < levels.size(); ++c) levels[c] = static_cast<double>(c) / 255.0;
  return levels;
}();

DrawnTable::Drawn Draw(const DuoColours& duo, double l) {
  const double lightness =
      Limit(l * (l - (1.0 - duo.lightness2)) + (duo.lightness1 + l) * (1.0 - l), 0.0, 1.0);
  const Colour dark = FromHls(duo.hue1, lightness, duo.saturation1);
  const Colour light = FromHls(duo.hue2, lightness, duo.saturation2);
  const double darkShare = (1.0 - l) * duo.share;
  const double lightShare = l * duo.share;
  return {light.blue * lightShare + dark.blue * darkShare,
          light.green * lightShare + dark.green * darkShare,
          light.red * lightShare + dark.red * darkShare};
}

double ShareOf(const AdoptedColour& adopted) {
  return adopted.percent / 100.0;
}

DrawnTable::Drawn Draw(const AdoptedColour& adopted, double l) {
  const double mapped = Limit(l * adopted.map.factor + adopted.map.offset, 0.0, 2.0);
  const Colour full = FromHls(adopted.hue, mapped, adopted.saturation);
  const double share = ShareOf(adopted);
  return {full.blue * share, full.green * share, full.red * share};
}

// What is drawn over a pixel, added to the part of it that is kept.
template <class ToByte>
void AddKept(std::uint8_t* colour, const std::uint8_t* source, double kept,
             const DrawnTable::Drawn& drawn, ToByte toByte) {
  colour[kBlue] = toByte(drawn.blue + source[kBlue] * kept);
  colour[kGreen] = toByte(drawn.green + source[kGreen] * kept);
  colour[kRed] = toByte(drawn.red + source[kRed] * kept);
}

// For what lies within 0..255: all ways to make it a byte then come to this.
std::uint8_t TruncateInRange(double value) {
  return static_cast<std::uint8_t>(static_cast<int>(value));
}

// Out of a table.
template <class ToByte>
void DrawRow(std::uint8_t* colour, const std::uint8_t* source, int width, const DrawnTable& table,
             ToByte toByte) {
  const double kept = table.Kept();
  for (int x = 0; x < width; ++x, colour += kBytesPerPixel, source += kBytesPerPixel) {
    const Extremes pair = ExtremesAt(source);
    const std::size_t number = DrawnTable::NumberOf(static_cast<std::size_t>(pair.high),
                                                    static_cast<std::size_t>(pair.low));
    AddKept(colour, source, kept, table.Entries()[number], toByte);
  }
}

void DrawInRange(std::uint8_t* colour, const std::uint8_t* source, int width,
                 const DrawnTable& table) {
  DrawRow(colour, source, width, table, TruncateInRange);
}

bool IsShare(double kept) {
  return kept >= 0.0 && kept <= 1.0;
}

bool HasSameBits(double a, double b) {
  return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

}  // namespace

template <class Parameters>
void DrawnTable::Fill(double share, const Parameters& parameters) {
  kept_ = 1.0 - share;
  Drawn* entry = drawn_;
  for (int high = 0; high < 256; ++high) {
    for (int low = 0; low <= high; ++low) {
      const auto lowest = static_cast<std::uint8_t>(low);
      *entry++ = Draw(parameters, Lightness(static_cast<std::uint8_t>(high), lowest, lowest));
    }
  }
}

DuoColours MakeDuoColours(Colour shadows, Colour highlights, int percent) {
  DuoColours duo;
  RgbToHls(shadows.red, shadows.green, shadows.blue, duo.hue1, duo.lightness1, duo.saturation1);
  RgbToHls(highlights.red, highlights.green, highlights.blue, duo.hue2, duo.lightness2,
           duo.saturation2);
  duo.share = percent / 100.0;
  return duo;
}

void DuoColour(std::uint8_t* colour, int width, const DuoColours& duo) {
  for (int x = 0; x < width; ++x, colour += kBytesPerPixel) {
    AddKept(colour, colour, 1.0 - duo.share, Draw(duo, LightnessAt(colour)),
            base::TruncateAndClampByte);
  }
}

void DrawnTable::Fill(const DuoColours& duo) {
  Fill(duo.share, duo);
}

void DrawnTable::DuoColour(std::uint8_t* colour, int width) const {
  if (IsShare(kept_)) return Choose<LightnessKernels>().draw(colour, colour, width, *this);
  DrawRow(colour, colour, width, *this, base::TruncateAndClampByte);
}

void AddLightness(const std::uint8_t* colour, const std::uint8_t* mask, int width,
                  LightnessStatistics& statistics) {
  LightnessStatistics s = statistics;
  for (int x = 0; x < width; ++x, colour += kBytesPerPixel) {
    const Extremes pair = ExtremesAt(colour);
    const double l = (kLevels[static_cast<std::size_t>(pair.high)] +
                      kLevels[static_cast<std::size_t>(pair.low)]) *
                     0.5;
    const double weight = 255 - mask[x];
    s.sum += weight * l;
    s.total += weight;
    s.maximum = std::max(s.maximum, l);
    s.minimum = std::min(s.minimum, l);
  }
  statistics = s;
}

LightnessMap FitLightness(const LightnessStatistics& statistics, double target) {
  const double mean = statistics.Mean();
  const double shift = target - mean;
  if (statistics.maximum + shift > 1.0) {
    const double factor = (1.0 - target) / (statistics.maximum - mean);
    return {factor, 1.0 - factor * statistics.maximum};
  }
  if (statistics.minimum + shift < 0.0) {
    const double factor = target / (mean - statistics.minimum);
    return {factor, -factor * statistics.minimum};
  }
  return {1.0, shift};
}

bool AdoptedColour::IsSame(const AdoptedColour& other) const {
  return HasSameBits(hue, other.hue) && HasSameBits(saturation, other.saturation) &&
         HasSameBits(map.factor, other.map.factor) && HasSameBits(map.offset, other.map.offset) &&
         percent == other.percent;
}

void AdoptColour(std::uint8_t* colour, const std::uint8_t* source, int width,
                 const AdoptedColour& adopted) {
  const double kept = 1.0 - ShareOf(adopted);
  for (int x = 0; x < width; ++x, colour += kBytesPerPixel, source += kBytesPerPixel) {
    AddKept(colour, source, kept, Draw(adopted, LightnessAt(source)), base::TruncateToByte);
  }
}

void DrawnTable::Fill(const AdoptedColour& adopted) {
  Fill(ShareOf(adopted), adopted);
}

void DrawnTable::AdoptColour(std::uint8_t* colour, const std::uint8_t* source, int width) const {
  if (IsShare(kept_)) return Choose<LightnessKernels>().draw(colour, source, width, *this);
  DrawRow(colour, source, width, *this, base::TruncateToByte);
}

const LightnessKernels& LightnessKernels::Plain() {
  static constexpr LightnessKernels kPlain = {DrawInRange, AddLightness};
  return kPlain;
}

}  // namespace kernels
