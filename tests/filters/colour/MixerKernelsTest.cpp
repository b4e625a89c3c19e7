#include "filters/colour/MixerKernels.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

#include "tests/filters/pixels/KernelRows.h"

namespace {

using kernels::ChannelRecipe;
using kernels::MixerKernels;
using kernels::Mixture;
using kernels::SimdLevel;
using testing_support::Row;

constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();

class MixerLevels : public testing::TestWithParam<SimdLevel> {
 protected:
  void SetUp() override {
    if (GetParam() > kernels::ProcessorSimdLevel()) GTEST_SKIP() << "not on this processor";
  }
};

INSTANTIATE_TEST_SUITE_P(Levels, MixerLevels, testing::Values(SimdLevel::Avx2, SimdLevel::Avx512),
                         [](const auto& level) { return kernels::SimdLevelName(level.param); });

ChannelRecipe RandomRecipe(std::mt19937& random, int most) {
  const auto weight = [&] {
    return static_cast<std::int32_t>(random() % (2u * static_cast<unsigned>(most) + 1)) - most;
  };
  ChannelRecipe recipe{.blue = weight(), .green = weight(), .red = weight()};
  const std::int64_t sum = std::int64_t{recipe.blue} + recipe.green + recipe.red;
  if (random() % 2 && sum > 0) recipe.divisor = sum;
  if (random() % 2) recipe.constant = weight();
  return recipe;
}

// Weights as dialogs offer them, as large as the fast loop takes them, and beyond.
TEST_P(MixerLevels, EqualThePlainKernel) {
  const MixerKernels& own = kernels::Choose<MixerKernels>(GetParam());
  ASSERT_NE(own.mix, MixerKernels::Plain().mix);
  std::mt19937 random(7);
  for (int run = 0; run < 400; ++run) {
    const int most = run % 8 == 0 ? 1 : run % 8 == 1 ? 2667 : run % 8 == 2 ? kMost / 2 : 200;
    Mixture mixture{RandomRecipe(random, most), RandomRecipe(random, most),
                    RandomRecipe(random, most)};
    if (run % 5 == 0) mixture.green = mixture.red = mixture.blue;
    if (run % 7 == 0) mixture.green = kernels::kKeepGreen;
    if (run == 3) mixture.red.constant = std::numeric_limits<std::int64_t>::max() / 2;
    const int width = run % 200 - 1;
    const int start = 96 + run % 64;
    const Row row = testing_support::RandomRow(static_cast<std::size_t>(start + 3 * width + 200),
                                               static_cast<unsigned>(run));
    testing_support::ExpectSameRow(MixerKernels::Plain(), own, row, [&](auto& k, std::uint8_t* at) {
      k.mix(at + start, width, mixture);
    });
  }
}

// All multiples of all divisors that dialogs can make: one too few shows at each of them.
TEST_P(MixerLevels, QuotientsAreTruncatedExactly) {
  Row ramp;
  for (int level = 0; level < 256; ++level)
    ramp.insert(ramp.end(), 3, static_cast<std::uint8_t>(level));
  for (int weight = -600; weight <= 600; ++weight) {
    for (const int divisor : {100, weight > 0 ? weight : 1, 599}) {
      const ChannelRecipe recipe{
          .red = weight, .divisor = divisor, .constant = weight < 0 ? 255 : 0};
      testing_support::ExpectSameRow(MixerKernels::Plain(),
                                     kernels::Choose<MixerKernels>(GetParam()), ramp,
                                     [&](auto& k, std::uint8_t* at) {
                                       k.mix(at, 256, {recipe, recipe, recipe});
                                     });
    }
  }
}

}  // namespace
