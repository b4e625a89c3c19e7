// The plain point kernels where the filters' own numbers do not lead, and what is kept in tables.
// What a filter reaches of them stands against a model of whole pictures.
#include "filters/pixels/PointKernels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <random>
#include <vector>

#include "filters/colour/LightnessKernels.h"

namespace {

using kernels::Colour;

constexpr int kMax = std::numeric_limits<int>::max();
constexpr int kMin = std::numeric_limits<int>::min();

// A picture with every pair of a largest and a smallest channel, the third anywhere between, in all
// orders.
std::vector<std::uint8_t> AllLightnesses() {
  std::mt19937 random(1);
  std::vector<std::uint8_t> row;
  for (int high = 0; high < 256; ++high) {
    for (int low = 0; low <= high; ++low) {
      const int between = low + static_cast<int>(random() % static_cast<unsigned>(high - low + 1));
      const int channels[] = {low, between, high};
      const auto first = random() % 3;
      const auto step = 1 + random() % 2;
      for (unsigned i = 0; i < 3; ++i) {
        row.push_back(static_cast<std::uint8_t>(channels[(first + i * step) % 3]));
      }
    }
  }
  return row;
}

// Shares inside and outside the range that has a shorter way to a byte.
constexpr int kShares[] = {0, 1, 37, 50, 99, 100, 101, -1, 250, -50, kMax, kMin};

// The table gives what the readable kernel makes of the row, to another row and in place.
template <class Drawn, class Kernel>
void ExpectTableEquals(const Drawn& drawn, Kernel kernel) {
  static const std::vector<std::uint8_t> row = AllLightnesses();
  const int width = static_cast<int>(row.size() / 3);
  const auto table = std::make_unique<kernels::DrawnTable>();
  table->Fill(drawn);
  std::vector<std::uint8_t> expected = row, found = row;
  kernel(expected, row, width);
  if constexpr (std::is_same_v<Drawn, kernels::DuoColours>) {
    table->DuoColour(found.data(), width);
  } else {
    std::vector<std::uint8_t> other(row.size());
    table->AdoptColour(other.data(), row.data(), width);
    EXPECT_TRUE(other == expected);
    table->AdoptColour(found.data(), found.data(), width);
  }
  EXPECT_TRUE(found == expected);
}

TEST(DrawnTable, GivesWhatTheKernelsGive) {
  const Colour kPairs[][2] = {{{0, 0, 0}, {255, 255, 255}},
                              {{120, 40, 0}, {30, 180, 255}},
                              {{255, 0, 255}, {17, 255, 18}},
                              {{200, 201, 199}, {3, 2, 1}}};
  kernels::AdoptedColour kColours[] = {{30.0, 0.5, {1.0, 0.0}},
                                       {210.0, 0.8, {0.7, 0.1}},
                                       {300.0, 0.4, {1.3, 0.5}},
                                       {0.0, 0.0, {-1.0, 0.7}},
                                       {120.0, 1.0, {std::nan(""), 0.0}}};
  for (const int percent : kShares) {
    SCOPED_TRACE(percent);
    for (const auto& pair : kPairs) {
      const auto duo = kernels::MakeDuoColours(pair[0], pair[1], percent);
      ExpectTableEquals(
          duo, [&](auto& to, auto&, int width) { kernels::DuoColour(to.data(), width, duo); });
    }
    for (kernels::AdoptedColour& adopted : kColours) {
      adopted.percent = percent;
      ExpectTableEquals(adopted, [&](auto& to, auto& from, int width) {
        kernels::AdoptColour(to.data(), from.data(), width, adopted);
      });
    }
  }
}

TEST(AdoptedColour, IsTheSameBitByBit) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  const kernels::AdoptedColour colour = {30.0, 0.5, {kNaN, 0.0}, 80};
  EXPECT_TRUE(colour.IsSame(colour));
  const kernels::AdoptedColour kOthers[] = {{31.0, 0.5, {kNaN, 0.0}, 80},
                                            {30.0, 0.6, {kNaN, 0.0}, 80},
                                            {30.0, 0.5, {1.0, 0.0}, 80},
                                            {30.0, 0.5, {kNaN, -0.0}, 80},
                                            {30.0, 0.5, {kNaN, 0.0}, 81}};
  for (const auto& other : kOthers) EXPECT_FALSE(colour.IsSame(other));
}

// No division by 0 and no overflow, whatever mask and percentage meet; the sanitizer build looks.
// A mask of 255 shows the bare background as both forms of the composition know it.
TEST(PointKernels, EveryMaskAtEveryPercentage) {
  for (int percent = -300; percent <= 300; ++percent) {
    for (int m = 0; m < 256; ++m) {
      std::uint8_t row[] = {10, 200, 90, static_cast<std::uint8_t>(m)};
      std::uint8_t pixel[] = {10, 200, 90, static_cast<std::uint8_t>(m)};
      kernels::PutBackground({row, row + 3}, {row, row + 3}, 1, {180, 128, 255}, percent);
      kernels::PutBackgroundPixel(pixel, pixel + 3, {180, 128, 255}, percent);
      if (percent <= 99) {
        ASSERT_EQ(row[3], pixel[3]) << m << ' ' << percent;
      }
      kernels::InvertMask({row, row + 3}, {row, row + 3}, 1, {1, 128, 255}, percent);
      if (percent == 0) {
        ASSERT_EQ(row[3], pixel[3]) << m;
      }
    }
  }
}

}  // namespace
