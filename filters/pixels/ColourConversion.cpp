#include "filters/pixels/ColourConversion.h"

#include <algorithm>
#include <cmath>

#include "base/Arithmetic.h"

namespace kernels {
namespace {

constexpr double kGreySaturation = 0.000001;

// Three channels 0..1.
struct Channels {
  double red, green, blue;
};

// The wheel between `low` and `high`, `turn` in sixths of a full turn from red.
Channels OnWheel(double turn, double low, double high, double grey) {
  const double span = high - low;
  if (!(turn >= 0.0)) return {grey, grey, grey};
  switch (static_cast<int>(std::floor(turn))) {
    case 0:
      return {high, low + span * turn, low};
    case 1:
      return {low + span * (2.0 - turn), high, low};
    case 2:
      return {low, high, low + span * (turn - 2.0)};
    case 3:
      return {low, low + span * (4.0 - turn), high};
    case 4:
      return {low + span * (turn - 4.0), low, high};
    default:
      return {high, low, low + span * (6.0 - turn)};
  }
}

Channels ToChannels(double hue, double lightness, double saturation) {
  if (saturation <= kGreySaturation) return {lightness, lightness, lightness};
  const double low = lightness <= 0.5 ? lightness * (1.0 - saturation)
                                      : lightness - saturation * (1.0 - lightness);
  const double high = 2.0 * lightness - low;
  return OnWheel(hue >= 360.0 ? 0.0 : hue / 60.0, low, high, lightness);
}

}  // namespace

void RgbToHls(std::uint8_t red, std::uint8_t green, std::uint8_t blue, double& hue,
              double& lightness, double& saturation) {
  const double r = red / 255.0;
  const double g = green / 255.0;
  const double b = blue / 255.0;
  const double high = std::max({r, g, b});
  const double low = std::min({r, g, b});
  lightness = (high + low) * 0.5;
  if (high == low) {
    saturation = 0.0;
    hue = 0.0;
    return;
  }
  const double span = high - low;
  saturation = lightness <= 0.5 ? span / (high + low) : span / (2.0 - (high + low));
  if (r == high) {
    hue = (g - b) / span;
  } else if (g == high) {
    hue = (b - r) / span + 2.0;
  } else {
    hue = (r - g) / span + 4.0;
  }
  hue *= 60.0;
  if (hue < 0.0) hue += 360.0;
}

double Lightness(std::uint8_t red, std::uint8_t green, std::uint8_t blue) {
  return (std::max({red, green, blue}) / 255.0 + std::min({red, green, blue}) / 255.0) * 0.5;
}

void HlsToRgb(double hue, double lightness, double saturation, std::uint8_t& red,
              std::uint8_t& green, std::uint8_t& blue) {
  const Channels channels = ToChannels(hue, lightness, saturation);
  red = base::TruncateToByte(channels.red * 255.0);
  green = base::TruncateToByte(channels.green * 255.0);
  blue = base::TruncateToByte(channels.blue * 255.0);
}

}  // namespace kernels
