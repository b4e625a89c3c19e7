#include "filters/frames/EdgeFade.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "filters/frames/EdgeFadeKernels.h"
#include "tests/filters/pixels/KernelRows.h"

namespace {

using kernels::EdgeFade;
using kernels::EdgeFadeKernels;
using testing_support::Row;

TEST(EdgeFade, ByHand) {
  // Reach 2, left edge alone: depths 1/4 and 3/4 keep 5/32 and 27/32 of the opacity.
  const EdgeFade fade(4, 1, 2, {true, false, false, false}, true);
  Row row = {0, 0, 0, 100};
  fade.FadeRow(row.data(), 0, 0, 4);
  EXPECT_EQ(row, (Row{255 - 39, 255 - 215, 0, 100}));
}

TEST(EdgeFade, EveryLevelGivesTheSameBytes) {
  const EdgeFadeKernels& plain = EdgeFadeKernels::Plain();
  std::vector<double> ways;
  for (int i = 0; i < 400; ++i) ways.push_back((i * 37 % 401) / 400.0);
  const std::vector<float> about(ways.begin(), ways.end());
  const kernels::FadeNumbers numbers = {ways.data() + 5, about.data() + 5};
  for (const auto level : {kernels::SimdLevel::Avx2, kernels::SimdLevel::Avx512}) {
    if (level > kernels::ProcessorSimdLevel()) continue;
    const EdgeFadeKernels& own = kernels::Choose<EdgeFadeKernels>(level);
    ASSERT_NE(own.byDistance, plain.byDistance);
    for (int count = 0; count < 300; ++count) {
      const Row row = testing_support::RandomRow(800, static_cast<unsigned>(count));
      const double across = (count + 1) / 300.0;
      testing_support::ExpectSameRow(plain, own, row, [&](auto& k, std::uint8_t* at) {
        k.byShares(at + 9, numbers, count);
        k.byWays(at + 10, numbers, across, count);
        k.byDistance(at + 11, numbers, across, count);
        k.mirroredByWays({at + 3, at + 720}, numbers, across, count);
        k.mirroredByDistance({at + 20, at + 701}, numbers, across, count);
      });
    }
  }
}

// The sizes of real pictures, where neighbours differ by little and many products come close to a
// whole number.
TEST(EdgeFade, EveryLevelGivesTheSameBytesInLargePictures) {
  constexpr int kWidth = 3001;
  std::vector<double> ways;
  for (int x = 0; x < kWidth; ++x) ways.push_back(1 - std::min((x + 0.5) / 1000, 1.0));
  const std::vector<float> about(ways.begin(), ways.end());
  for (const auto level : {kernels::SimdLevel::Avx2, kernels::SimdLevel::Avx512}) {
    if (level > kernels::ProcessorSimdLevel()) continue;
    for (int y = 0; y < 1000; ++y) {
      const double across = 1 - (y + 0.5) / 1000;
      Row row(kWidth, static_cast<std::uint8_t>(y % 3 == 0 ? 0 : y));
      std::fill(row.begin() + 2000, row.end(), static_cast<std::uint8_t>(y % 2));
      testing_support::ExpectSameRow(
          EdgeFadeKernels::Plain(), kernels::Choose<EdgeFadeKernels>(level), row,
          [&](auto& k, std::uint8_t* at) {
            const kernels::FadeNumbers numbers = {ways.data(), about.data()};
            (y % 2 ? k.byDistance : k.byWays)(at, numbers, across, 1000);
            (y % 2 ? k.mirroredByWays : k.mirroredByDistance)({at + 1000, at + kWidth}, numbers,
                                                              across, 1000);
          });
    }
  }
}

}  // namespace
