#include "filters/frames/RoundCorners.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace {

// The share of a pixel that lies under the circles of its quarter or quarters, by samples.
double SampledShare(int x, int y, int width, int height, int radius) {
  constexpr int kSamples = 64;
  int inside = 0;
  for (int i = 0; i < kSamples * kSamples; ++i) {
    const auto along = [&](int at, int sample, int size) {
      const double place = at + (sample + 0.5) / kSamples;
      return std::max(0.0, radius - std::min(place, size - place));
    };
    const double dx = along(x, i % kSamples, width);
    const double dy = along(y, i / kSamples, height);
    inside += dx == 0 || dy == 0 || dx * dx + dy * dy < radius * radius;
  }
  return static_cast<double>(inside) / (kSamples * kSamples);
}

// Every radius from none to more than half of both sides, on even and odd sizes.
TEST(RoundCorners, KeepsTheShareUnderTheCircle) {
  for (const auto& [width, height] : {std::pair(26, 17), {17, 24}, {15, 15}, {1, 1}, {1, 9}}) {
    for (int radius = -1; radius <= std::min(width, height) + 1; ++radius) {
      for (const int before : {0, 100}) {
        std::vector<std::uint8_t> plane(static_cast<std::size_t>(width * height),
                                        static_cast<std::uint8_t>(before));
        std::vector<std::uint8_t*> rows;
        for (int y = 0; y < height; ++y) rows.push_back(plane.data() + y * width);
        kernels::RoundCorners(rows.data(), width, height, radius);
        const bool rounds = radius > 0 && radius <= std::min(width, height);
        for (int y = 0; y < height; ++y) {
          for (int x = 0; x < width; ++x) {
            const double share = rounds ? SampledShare(x, y, width, height, radius) : 1.0;
            ASSERT_NEAR(255 - rows[y][x], (255 - before) * share, 1.7)
                << x << ',' << y << " of " << width << " x " << height << ", radius " << radius;
            ASSERT_EQ(rows[y][x], rows[y][width - 1 - x]);
            ASSERT_EQ(rows[y][x], rows[height - 1 - y][x]);
          }
        }
      }
    }
  }
}

TEST(RoundCorners, SharesAreExact) {
  EXPECT_NEAR(kernels::ShareUnderCircle(0, 1, 0, 1, 1), 0.785398163, 2e-7);
  EXPECT_EQ(kernels::ShareUnderCircle(3, 4, 4, 5, 5), kernels::ShareUnderCircle(4, 5, 3, 4, 5));
  EXPECT_EQ(kernels::ShareUnderCircle(0, 1, 0, 1, 50), 0.0);
  EXPECT_EQ(kernels::ShareUnderCircle(40, 41, 40, 41, 50), 1.0);
}

}  // namespace
