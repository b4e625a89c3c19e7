// Hue, lightness and saturation against tables of their own making.
#include "filters/pixels/ColourConversion.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using kernels::Colour;

Colour FromHls(double hue, double lightness, double saturation) {
  Colour colour;
  kernels::HlsToRgb(hue, lightness, saturation, colour.red, colour.green, colour.blue);
  return colour;
}

struct Hls {
  double hue, lightness, saturation;
};

Hls ToHls(int red, int green, int blue) {
  Hls hls;
  kernels::RgbToHls(static_cast<std::uint8_t>(red), static_cast<std::uint8_t>(green),
                    static_cast<std::uint8_t>(blue), hls.hue, hls.lightness, hls.saturation);
  return hls;
}

// The wheel as a table of numbers, in place of code: a channel is base + slope * (h - from), all in
// units of the span between low and high.
struct Ramp {
  double base, slope, from;
};
constexpr Ramp kLow = {0, 0, 0}, kHigh = {1, 0, 0};
constexpr Ramp kWheel[6][3] = {{kHigh, {0, 1, 0}, kLow}, {{0, -1, 2}, kHigh, kLow},
                               {kLow, kHigh, {0, 1, 2}}, {kLow, {0, -1, 4}, kHigh},
                               {{0, 1, 4}, kLow, kHigh}, {kHigh, kLow, {0, -1, 6}}};

std::uint8_t WheelByte(const Ramp& ramp, double h, double low, double high) {
  if (ramp.slope == 0) return static_cast<std::uint8_t>((ramp.base > 0 ? high : low) * 255.0);
  return static_cast<std::uint8_t>((low + (high - low) * (ramp.slope * (h - ramp.from))) * 255.0);
}

Colour WheelColour(const Hls& c) {
  const double low = c.lightness <= 0.5 ? c.lightness * (1 - c.saturation)
                                        : c.lightness - c.saturation * (1 - c.lightness);
  const double high = 2 * c.lightness - low;
  const double h = c.hue / 60;
  const Ramp(&ramps)[3] = kWheel[static_cast<int>(h)];
  return {WheelByte(ramps[2], h, low, high), WheelByte(ramps[1], h, low, high),
          WheelByte(ramps[0], h, low, high)};
}

// Truncation may cost a level on the way back, never more and never upwards.
bool IsBack(int before, int after) {
  return after == before || after == before - 1;
}

TEST(ColourConversion, KnownColours) {
  const struct {
    int red, green, blue;
    double hue, lightness, saturation;
  } kCases[] = {{255, 0, 0, 0, 0.5, 1},     {255, 255, 0, 60, 0.5, 1}, {0, 255, 0, 120, 0.5, 1},
                {0, 255, 255, 180, 0.5, 1}, {0, 0, 255, 240, 0.5, 1},  {255, 0, 255, 300, 0.5, 1},
                {0, 0, 0, 0, 0, 0},         {255, 255, 255, 0, 1, 0},  {51, 51, 51, 0, 0.2, 0}};
  for (const auto& c : kCases) {
    const Hls hls = ToHls(c.red, c.green, c.blue);
    EXPECT_DOUBLE_EQ(hls.hue, c.hue);
    EXPECT_DOUBLE_EQ(hls.lightness, c.lightness);
    EXPECT_DOUBLE_EQ(hls.saturation, c.saturation);
  }
}

TEST(ColourConversion, EveryFifthLevelThereAndBack) {
  for (int red = 0; red < 256; red += 5) {
    for (int green = 0; green < 256; green += 5) {
      for (int blue = 0; blue < 256; blue += 5) {
        const Hls hls = ToHls(red, green, blue);
        const Colour back = FromHls(hls.hue, hls.lightness, hls.saturation);
        ASSERT_TRUE(hls.hue >= 0 && hls.hue < 360) << red << ' ' << green << ' ' << blue;
        ASSERT_TRUE(hls.saturation >= 0 && hls.saturation < 1 + 1e-12);
        ASSERT_TRUE(IsBack(red, back.red) && IsBack(green, back.green) && IsBack(blue, back.blue))
            << red << ' ' << green << ' ' << blue;
        if (hls.saturation > 0) {
          ASSERT_EQ(back, WheelColour(hls)) << red << ' ' << green << ' ' << blue;
        }
        ASSERT_EQ(hls.lightness, kernels::Lightness(static_cast<std::uint8_t>(red),
                                                    static_cast<std::uint8_t>(green),
                                                    static_cast<std::uint8_t>(blue)));
      }
    }
  }
}

// Levels that are lost must stay lost: pictures rendered before depend on them. A fused
// multiply-add or a rounding changes the count.
TEST(ColourConversion, LosesTheSameLevels) {
  int lost = 0;
  std::uint32_t digest = 0;
  for (int i = 0; i < 1 << 24; i += 37) {
    const Hls hls = ToHls(i >> 16, i >> 8 & 255, i & 255);
    const Colour back = FromHls(hls.hue, hls.lightness, hls.saturation);
    const int packed = back.red << 16 | back.green << 8 | back.blue;
    lost += packed != i;
    digest = digest * 31 + static_cast<std::uint32_t>(packed);
  }
  EXPECT_EQ(lost, 235027);
  EXPECT_EQ(digest, 1747110417u);
}

TEST(ColourConversion, AnyNumbersAreSafe) {
  constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  constexpr double kHuge = std::numeric_limits<double>::max();
  constexpr Colour kGrey = {102, 102, 102};
  for (const double hue : {-0.001, -60.0, -kHuge, -kInfinity, kNan}) {
    EXPECT_EQ(FromHls(hue, 0.4, 0.5), kGrey) << hue;
  }
  for (const double hue : {360.0, 361.0, kHuge, kInfinity}) {
    EXPECT_EQ(FromHls(hue, 0.4, 0.5), FromHls(0.0, 0.4, 0.5)) << hue;
  }
  EXPECT_EQ(FromHls(0.0, kNan, 0.0), Colour{});
  EXPECT_EQ(FromHls(90.0, kNan, kNan), Colour{});
  // Above 1 the low eight bits are kept: 2.0 is 510.
  EXPECT_EQ(FromHls(0.0, 2.0, 0.0), (Colour{254, 254, 254}));
  // What no integer holds must not trap; the sanitizer build sees to the rest.
  for (const double lightness : {-kHuge, -3.0, kHuge, kInfinity, -kInfinity, 1e18}) {
    for (const double saturation : {-kHuge, 0.5, 1e18, kHuge, kInfinity, kNan}) {
      for (const double hue : {0.0, 100.0, 359.9999999999999, kNan}) {
        FromHls(hue, lightness, saturation);
      }
    }
  }
}

}  // namespace
