// Drawing by lightness at every vector unit; what is drawn is tested with PointKernels.
#include "filters/colour/LightnessKernels.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <memory>

#include "tests/filters/pixels/KernelRows.h"

namespace {

using kernels::LightnessKernels;
using kernels::LightnessStatistics;
using kernels::SimdLevel;
using testing_support::RandomRow;
using testing_support::Row;

class LightnessLevels : public testing::TestWithParam<SimdLevel> {
 protected:
  void SetUp() override {
    if (GetParam() > kernels::ProcessorSimdLevel()) GTEST_SKIP() << "not on this processor";
  }
  const LightnessKernels& own =
      kernels::Choose<LightnessKernels>(std::min(GetParam(), kernels::ProcessorSimdLevel()));
};

INSTANTIATE_TEST_SUITE_P(Levels, LightnessLevels,
                         testing::Values(SimdLevel::Avx2, SimdLevel::Avx512),
                         [](const auto& level) { return kernels::SimdLevelName(level.param); });

TEST_P(LightnessLevels, DrawLikeThePlainKernel) {
  ASSERT_NE(own.draw, LightnessKernels::Plain().draw);
  const auto table = std::make_unique<kernels::DrawnTable>();
  for (const int percent : {0, 80, 100}) {
    table->Fill(kernels::MakeDuoColours({120, 40, 0}, {30, 180, 255}, percent));
    for (int width = -1; width <= 3000; width += width < 140 ? 1 : 715) {
      const std::size_t start = 96 + static_cast<std::size_t>(width & 63);
      const Row row = RandomRow(start + 3 * 3000 + 100, static_cast<unsigned>(width));
      testing_support::ExpectSameRow(LightnessKernels::Plain(), own, row,
                                     [&](auto& k, std::uint8_t* at) {
                                       k.draw(at + start, row.data() + start, width, *table);
                                       k.draw(at + start, at + start, width, *table);
                                     });
    }
  }
}

void ExpectSameBits(const LightnessStatistics& expected, const LightnessStatistics& found) {
  const auto bits = [](double number) { return std::bit_cast<std::uint64_t>(number); };
  EXPECT_EQ(bits(found.sum), bits(expected.sum));
  EXPECT_EQ(bits(found.total), bits(expected.total));
  EXPECT_EQ(bits(found.maximum), bits(expected.maximum));
  EXPECT_EQ(bits(found.minimum), bits(expected.minimum));
}

// Sums of every size, small ones among them, where many numbers lie in the middle between two that
// the sum can grow by, and such as pass a power of two.
TEST_P(LightnessLevels, AddUpToTheLastBit) {
  ASSERT_NE(own.addLightness, kernels::AddLightness);
  const int width = 700;
  for (unsigned seed = 0; seed < 300; ++seed) {
    Row colour = RandomRow(3 * width, seed);
    const Row mask =
        seed % 3 == 0 ? Row(width, static_cast<std::uint8_t>(seed % 2)) : RandomRow(width, seed);
    if (seed % 5 == 0) {
      for (std::uint8_t& byte : colour) byte = static_cast<std::uint8_t>(100 + byte % 8);
    }
    LightnessStatistics expected;
    expected.sum =
        seed % 7 == 0 ? std::ldexp(1.0, static_cast<int>(17 + seed % 16)) - 9000 : 600.0 * seed;
    expected.total = 1e6;
    LightnessStatistics found = expected;
    for (const int count : {width, 200, 63, 1, 0}) {
      kernels::AddLightness(colour.data(), mask.data(), count, expected);
      own.addLightness(colour.data(), mask.data(), count, found);
      ExpectSameBits(expected, found);
    }
    ASSERT_FALSE(HasFailure()) << seed;
  }
}

}  // namespace
