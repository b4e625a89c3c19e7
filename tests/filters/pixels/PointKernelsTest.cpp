// The plain point kernels where the filters' own numbers do not lead, and what is kept in tables.
// What a filter reaches of them stands against a model of whole pictures.
#include "filters/pixels/PointKernels.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <ostream>
#include <random>
#include <vector>

#include "filters/colour/LightnessKernels.h"

namespace kernels {
void PrintTo(const Colour& c, std::ostream* out) {
  *out << int{c.blue} << ' ' << int{c.green} << ' ' << int{c.red};
}
}  // namespace kernels

namespace {

using kernels::Colour;

constexpr int kMax = std::numeric_limits<int>::max();
constexpr int kMin = std::numeric_limits<int>::min();

// A colour after `change` of a row of one pixel.
template <class Change>
Colour Changed(Colour before, Change change) {
  std::uint8_t pixel[] = {before.blue, before.green, before.red};
  change(pixel);
  return {pixel[0], pixel[1], pixel[2]};
}

TEST(PointKernels, AdoptColour) {
  const struct {
    Colour before;
    kernels::AdoptedColour adopted;
    Colour after;
  } kCases[] = {
      {{10, 200, 90}, {30.0, 0.5, {1.0, 0.0}, 100}, {52, 105, 157}},
      {{10, 200, 90}, {210.0, 0.8, {0.7, 0.1}, 35}, {68, 164, 65}},
      {{250, 250, 250}, {300.0, 0.4, {1.0, 0.5}, 100}, {72, 170, 72}},
      {{250, 250, 250}, {0.0, 0.0, {1.0, 0.5}, 50}, {185, 185, 185}},
      {{20, 30, 40}, {120.0, 1.0, {1.0, -0.5}, 100}, {0, 0, 0}},
      {{20, 30, 40}, {120.0, 0.3, {1.0, 0.25}, -70}, {245, 223, 22}},
      {{20, 30, 40}, {120.0, 0.3, {1.0, 0.25}, 0}, {20, 30, 40}},
      {{20, 30, 40}, {120.0, 0.3, {std::numeric_limits<double>::quiet_NaN(), 0}, 100}, {0, 0, 0}},
  };
  for (const auto& c : kCases) {
    const std::uint8_t source[] = {c.before.blue, c.before.green, c.before.red};
    EXPECT_EQ(
        Changed({1, 2, 3}, [&](std::uint8_t* p) { kernels::AdoptColour(p, source, 1, c.adopted); }),
        c.after);
    EXPECT_EQ(Changed(c.before, [&](std::uint8_t* p) { kernels::AdoptColour(p, p, 1, c.adopted); }),
              c.after);
  }
}

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

TEST(DrawnTable, GivesWhatDuoColourGives) {
  const auto table = std::make_unique<kernels::DrawnTable>();
  const std::vector<std::uint8_t> row = AllLightnesses();
  const int width = static_cast<int>(row.size() / 3);
  const Colour kPairs[][2] = {{{0, 0, 0}, {255, 255, 255}},
                              {{120, 40, 0}, {30, 180, 255}},
                              {{255, 0, 255}, {17, 255, 18}},
                              {{200, 201, 199}, {3, 2, 1}}};
  for (const auto& pair : kPairs) {
    for (const int percent : kShares) {
      const auto duo = kernels::MakeDuoColours(pair[0], pair[1], percent);
      table->Fill(duo);
      std::vector<std::uint8_t> expected = row;
      std::vector<std::uint8_t> found = row;
      kernels::DuoColour(expected.data(), width, duo);
      table->DuoColour(found.data(), width);
      ASSERT_TRUE(found == expected) << percent;
    }
  }
}

TEST(DrawnTable, GivesWhatAdoptColourGives) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  const auto table = std::make_unique<kernels::DrawnTable>();
  const std::vector<std::uint8_t> row = AllLightnesses();
  const int width = static_cast<int>(row.size() / 3);
  const kernels::AdoptedColour kColours[] = {{30.0, 0.5, {1.0, 0.0}},
                                             {210.0, 0.8, {0.7, 0.1}},
                                             {300.0, 0.4, {1.3, 0.5}},
                                             {0.0, 0.0, {-1.0, 0.7}},
                                             {120.0, 1.0, {kNaN, 0.0}}};
  for (kernels::AdoptedColour adopted : kColours) {
    for (const int percent : kShares) {
      adopted.percent = percent;
      table->Fill(adopted);
      std::vector<std::uint8_t> expected(row.size());
      std::vector<std::uint8_t> found(row.size());
      kernels::AdoptColour(expected.data(), row.data(), width, adopted);
      table->AdoptColour(found.data(), row.data(), width);
      ASSERT_TRUE(found == expected) << percent;
      found = row;
      table->AdoptColour(found.data(), found.data(), width);
      ASSERT_TRUE(found == expected) << percent;
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

TEST(PointKernels, LightnessMap) {
  // Black, white and a grey of 0.2 that is half transparent, and one that nobody sees.
  const std::uint8_t colour[] = {0, 0, 0, 255, 255, 255, 51, 51, 51, 204, 204, 204};
  const std::uint8_t mask[] = {0, 0, 127, 255};
  kernels::LightnessStatistics all;
  kernels::AddLightness(colour, mask, 4, all);
  EXPECT_DOUBLE_EQ(all.sum, 255 + 128 * 0.2);
  EXPECT_EQ(all.total, 638);
  EXPECT_EQ(all.minimum, 0);
  EXPECT_EQ(all.maximum, 1);

  kernels::LightnessStatistics unseen;
  kernels::AddLightness(colour + 9, mask + 3, 1, unseen);
  const kernels::LightnessMap shift = kernels::FitLightness(unseen, 0.1);
  EXPECT_EQ(shift.factor, 1.0);
  EXPECT_EQ(shift.offset, 0.1);

  // The mean lands on the target, the extreme that would leave the range on its end.
  const kernels::LightnessStatistics grey = {
      .sum = 40, .total = 100, .maximum = 0.9, .minimum = 0.2};
  for (const double target : {0.0, 0.1, 0.3, 0.4, 0.5, 0.6, 0.9, 1.0}) {
    const kernels::LightnessMap map = kernels::FitLightness(grey, target);
    EXPECT_NEAR(0.4 * map.factor + map.offset, target, 1e-12);
    EXPECT_LE(0.9 * map.factor + map.offset, 1.0 + 1e-12);
    EXPECT_GE(0.2 * map.factor + map.offset, -1e-12);
    EXPECT_EQ(map.factor < 1.0, target < 0.2 || target > 0.5) << target;
  }
}

TEST(PointKernels, PutBackgroundPixel) {
  const struct {
    std::uint8_t mask;
    int percent;
    Colour colour;
    std::uint8_t after;
  } kCases[] = {{0, 30, {10, 200, 90}, 0},       {255, 30, {180, 128, 255}, 76},
                {77, 0, {61, 178, 139}, 0},      {77, 100, {10, 200, 90}, 77},
                {77, 40, {45, 185, 124}, 30},    {85, 300, {10, 200, 90}, 255},
                {200, kMin, {179, 128, 254}, 1}, {255, kMax, {180, 128, 255}, 99}};
  for (const auto& c : kCases) {
    std::uint8_t mask = c.mask;
    const auto put = [&](std::uint8_t* p) {
      kernels::PutBackgroundPixel(p, &mask, {180, 128, 255}, c.percent);
    };
    EXPECT_EQ(Changed({10, 200, 90}, put), c.colour) << int{c.mask} << ", " << c.percent;
    EXPECT_EQ(mask, c.after) << int{c.mask} << ", " << c.percent;
  }
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
