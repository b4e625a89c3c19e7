// Conversion between the three colour bytes of a pixel and hue, lightness and saturation.
#pragma once

#include <cstdint>

namespace kernels {

// One colour in the order in which a row holds it.
struct Colour {
  std::uint8_t blue = 0;
  std::uint8_t green = 0;
  std::uint8_t red = 0;
  bool operator==(const Colour&) const = default;
};

// Hue in degrees, 0 to below 360; lightness 0..1; saturation 0..1, which rounding may exceed by one
// unit in the last place. A grey has hue 0 and saturation 0.
void RgbToHls(std::uint8_t red, std::uint8_t green, std::uint8_t blue, double& hue,
              double& lightness, double& saturation);

// The lightness that RgbToHls gives, alone.
double Lightness(std::uint8_t red, std::uint8_t green, std::uint8_t blue);

// The bytes are truncated and keep their low eight bits: nothing is rounded and nothing limited, so
// that the way there and back may lose a level, and a lightness above 1 wraps. Any doubles are
// safe. A hue of 360 or more counts as 0; a hue below 0 or no number has no place on the wheel and
// gives the grey of the lightness.
void HlsToRgb(double hue, double lightness, double saturation, std::uint8_t& red,
              std::uint8_t& green, std::uint8_t& blue);

}  // namespace kernels
