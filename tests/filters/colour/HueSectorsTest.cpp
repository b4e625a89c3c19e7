// How settings for sectors of hue become numbers for each hue.
#include "filters/colour/HueSectors.h"

#include <gtest/gtest.h>

#include <limits>

#include "filters/colour/BalanceKernels.h"

namespace {

using kernels::SectorWeight;

constexpr int kMost = std::numeric_limits<std::int32_t>::max();

TEST(HueSectors, WeightsOfOneSectorAndItsNeighbours) {
  // At the corners, between them, and truncated: 29 / 30 is 96 percent.
  const struct {
    int sector, hue, weight;
  } kCases[] = {{0, 0, 100},   {0, 15, 100}, {0, 16, 96},   {0, 30, 50},  {0, 45, 0},
                {0, 60, 0},    {0, 314, 0},  {0, 315, 0},   {0, 316, 3},  {0, 344, 96},
                {0, 345, 100}, {1, 15, 0},   {1, 16, 3},    {1, 60, 100}, {1, 104, 3},
                {5, 254, 0},   {5, 270, 50}, {5, 300, 100}, {5, 330, 50}, {5, 359, 0}};
  for (const auto& c : kCases) {
    EXPECT_EQ(SectorWeight(c.sector, c.hue), c.weight) << c.sector << " at " << c.hue;
  }
}

TEST(HueSectors, ChangesAreMixedWrappedAndLimited) {
  kernels::HueChanges changes;
  // One division of the whole sum: (-7 x 100 + 50 x 3 + 50 x 4) / 100 is -3, not -7 + 1 + 2.
  kernels::BuildHueChanges({-7, 30, 60, {3, 4}, {40, 45}, {90, -250, 0, 0, 0, -600}}, changes);
  EXPECT_EQ(changes.byHue[30].shift, -3.0);
  EXPECT_EQ(changes.byHue[30].saturation, 101.0 / (101 - 72));
  EXPECT_EQ(changes.byHue[30].lightness, -20 / 100.0);
  EXPECT_EQ(changes.byHue[300].lightness, -1.0);
  EXPECT_EQ(changes.greyLightness, 0.6);
  const struct {
    int hue;
    double shift;
  } kTurns[] = {{180, 180}, {-180, -180}, {181, -179}, {540, 180}, {-541, 179}, {kMost, 127}};
  for (const auto& turn : kTurns) {
    kernels::BuildHueChanges({turn.hue, kMost, -kMost - 1, {}, {}, {}}, changes);
    EXPECT_EQ(changes.byHue[359].shift, turn.shift) << turn.hue;
    EXPECT_EQ(changes.byHue[359].saturation, 101.0);
    EXPECT_EQ(changes.byHue[359].lightness, -1.0);
  }
}

TEST(HueSectors, SaturationFactors) {
  kernels::HueFactors factors;
  kernels::BuildSaturationFactors({-50, 0, 1, -200, kMost, 0}, factors);
  EXPECT_EQ(factors.byHue[0], 0.5);
  EXPECT_EQ(factors.byHue[30], 0.75);
  EXPECT_EQ(factors.byHue[60], 1.0);
  EXPECT_EQ(factors.byHue[120], 101.0 / 100);
  EXPECT_EQ(factors.byHue[180], 0.0);
  EXPECT_EQ(factors.byHue[240], 101.0);
}

kernels::Balance BalanceOf(const kernels::BalanceSettings& settings) {
  kernels::Balance balance;
  kernels::BuildBalance(settings, balance);
  return balance;
}

TEST(HueSectors, SlidersAreMixedAndLimited) {
  // At hue 30 red and yellow weigh 50 percent each: (-7 x 100 + 50 x 3 + 50 x 4) / 100 is -3.
  const kernels::Balance balance = BalanceOf({.red = {-7, {3, 4}},
                                              .green = {60, {90}},
                                              .blue = {-60, {-90}},
                                              .lightness = {0, {0, 0, 25}},
                                              .saturation = {-40, {0, 0, 0, 0, 0, 141}}});
  EXPECT_EQ(balance.entries[30].shifts[2], -3);
  EXPECT_EQ(balance.entries[0].shifts[1], 127);
  EXPECT_EQ(balance.entries[0].shifts[0], -127);
  EXPECT_EQ(balance.entries[120].lightness, 0.25);
  EXPECT_EQ(balance.entries[300].saturation, 101.0);
  EXPECT_EQ(balance.entries[0].saturation, 0.6);
  const kernels::BalanceEntry& grey = balance.entries[kernels::kGreyEntry];
  EXPECT_EQ(grey.shifts[2], -8);  // -7 x 127 / 100
  EXPECT_EQ(grey.shifts[1], 76);
  EXPECT_EQ(grey.lightness, 0);
  EXPECT_TRUE(grey.recolours);
  EXPECT_FALSE(BalanceOf({.red = {100, {}}}).entries[7].recolours);
}

}  // namespace
