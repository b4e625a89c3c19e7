#include "filters/colour/BalanceKernels.h"

#include <gtest/gtest.h>

#include "filters/colour/HueSectors.h"
#include "tests/filters/pixels/KernelRows.h"

namespace {

using kernels::Balance;
using kernels::BalanceKernels;
using kernels::SimdLevel;
using testing_support::Row;

Balance BalanceOf(const kernels::BalanceSettings& settings) {
  Balance balance;
  kernels::BuildBalance(settings, balance);
  return balance;
}

TEST(BalanceKernels, SlidersAreMixedAndLimited) {
  // At hue 30 red and yellow weigh 50 percent each: (-7 x 100 + 50 x 3 + 50 x 4) / 100 is -3.
  const Balance balance = BalanceOf({.red = {-7, {3, 4}},
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

class BalanceLevels : public testing::TestWithParam<SimdLevel> {
 protected:
  void SetUp() override {
    if (GetParam() > kernels::ProcessorSimdLevel()) GTEST_SKIP() << "not on this processor";
  }
};

INSTANTIATE_TEST_SUITE_P(Levels, BalanceLevels, testing::Values(SimdLevel::Avx2, SimdLevel::Avx512),
                         [](const auto& level) { return kernels::SimdLevelName(level.param); });

// Every grey and every 43rd of all other colours, under shifts alone, under all sliders, and where
// some hues alone are recoloured.
TEST_P(BalanceLevels, EqualThePlainKernel) {
  const BalanceKernels& own = kernels::Choose<BalanceKernels>(GetParam());
  ASSERT_NE(own.balance, BalanceKernels::Plain().balance);
  Row row;
  for (int i = 0; i < 1 << 24; i += i < 256 ? 1 : 43) {
    const int colour = i < 256 ? i * 0x010101 : i;
    for (const int shift : {0, 8, 16}) row.push_back(static_cast<std::uint8_t>(colour >> shift));
  }
  for (const Balance& balance :
       {BalanceOf({.red = {20, {30, -60}}, .green = {0, {0, 0, 99}}, .blue = {-30, {}}}),
        BalanceOf({.red = {20, {30, -60}},
        .green = {0, {0, 0, 99}},
        .blue = {-30, {}},
        .lightness = {5, {10, 0, -90}},
        .saturation = {-20, {60, 100, 0, -100}}}),
        BalanceOf({.green = {7, {}}, .saturation = {0, {0, 0, 0, 0, 45}}})}) {
    testing_support::ExpectSameRow(BalanceKernels::Plain(), own, row,
                                   [&](auto& k, std::uint8_t* at) {
                                     k.balance(at, static_cast<int>(row.size() / 3), balance);
                                   });
    for (int width = -1; width <= 140; ++width) {
      const int start = 96 + (width & 63);
      testing_support::ExpectSameRow(
          BalanceKernels::Plain(), own,
          testing_support::RandomRow(static_cast<std::size_t>(start + 3 * width + 200),
                                     static_cast<unsigned>(width)),
          [&](auto& k, std::uint8_t* at) { k.balance(at + start, width, balance); });
    }
  }
}

}  // namespace
