// Hue, lightness and saturation, by hand and over all colours.
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
    ASSERT_EQ(hls.lightness,
              kernels::Lightness(static_cast<std::uint8_t>(i >> 16),
                                 static_cast<std::uint8_t>(i >> 8), static_cast<std::uint8_t>(i)));
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
