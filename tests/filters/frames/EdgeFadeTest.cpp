#include "filters/frames/EdgeFade.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "filters/frames/EdgeFadeKernels.h"
#include "tests/filters/pixels/KernelRows.h"

namespace {

using kernels::EdgeFade;
using kernels::EdgeFadeKernels;
using kernels::FadedEdges;
using testing_support::Row;

struct Frame {
  int width, height;
  double reach;
  FadedEdges edges;
  bool round;
};

// Pixel by pixel, as the frame is described.
std::uint8_t Modelled(const Frame& f, int x, int y, std::uint8_t mask) {
  if (f.reach < 0.5) return mask;
  const double a =
      std::min(f.edges.left ? x + 0.5 : f.reach, f.edges.right ? f.width - x - 0.5 : f.reach);
  const double b =
      std::min(f.edges.top ? f.height - y - 0.5 : f.reach, f.edges.bottom ? y + 0.5 : f.reach);
  const double u = 1 - std::min(a / f.reach, 1.0);
  const double v = 1 - std::min(b / f.reach, 1.0);
  const double t = f.round ? 1 - std::min(std::sqrt(u * u + v * v), 1.0) : 1 - std::max(u, v);
  return static_cast<std::uint8_t>(255 - std::trunc((255 - mask) * (t * t * (3 - 2 * t))));
}

TEST(EdgeFade, EqualsItsModelInWholeRowsAndParts) {
  const FadedEdges all;
  for (const Frame& f :
       {Frame{40, 30, 15, all, true}, Frame{40, 30, 15, all, false},
        Frame{40, 30, 4.25, {true, false, false, true}, true},
        Frame{33, 70, 7.5, {false, true, true, false}, false}, Frame{9, 9, 0.49, all, true},
        Frame{1, 1, 0.5, all, true}, Frame{200, 3, 1.5, all, true}, Frame{150, 150, 75, all, true},
        Frame{151, 160, 75.5, all, false}, Frame{160, 151, 75.5, {true, false, true, true}, true},
        Frame{5, 5, 2.5, {false, false, false, false}, true}}) {
    const EdgeFade fade(f.width, f.height, f.reach, f.edges, f.round);
    for (int y = 0; y < f.height; ++y) {
      const Row row =
          testing_support::RandomRow(static_cast<std::size_t>(f.width), static_cast<unsigned>(y));
      Row expected = row;
      for (int x = 0; x < f.width; ++x) {
        expected[static_cast<std::size_t>(x)] = Modelled(f, x, y, row[static_cast<std::size_t>(x)]);
      }
      for (const int first : {0, f.width / 3, f.width - 1}) {
        Row found = row;
        fade.FadeRow(found.data() + first, first, y, f.width - first);
        ASSERT_TRUE(std::equal(found.begin() + first, found.end(), expected.begin() + first))
            << f.width << " x " << f.height << ", row " << y << " from " << first;
        ASSERT_TRUE(std::equal(row.begin(), row.begin() + first, found.begin()));
      }
    }
  }
}

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
