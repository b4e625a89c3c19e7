// The plain point kernels against results worked out by hand and by exact integers of any size.
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

TEST(PointKernels, Sepia) {
  const struct {
    Colour before;
    std::uint8_t keep;
    Colour after;
  } kCases[] = {{{0, 200, 0}, 255, {0, 200, 0}},         {{30, 197, 9}, 0, {67, 109, 171}},
                {{70, 193, 49}, 127, {75, 157, 117}},    {{200, 180, 144}, 1, {116, 158, 219}},
                {{130, 187, 169}, 254, {129, 186, 169}}, {{0, 0, 0}, 0, {0, 0, 49}},
                {{255, 255, 255}, 0, {200, 242, 255}},   {{255, 0, 255}, 128, {152, 45, 204}}};
  for (const auto& c : kCases) {
    EXPECT_EQ(Changed(c.before, [&](std::uint8_t* p) { kernels::Sepia(p, 1, c.keep); }), c.after);
  }
}

TEST(PointKernels, Invert) {
  const struct {
    int percent;
    std::uint8_t before, after;
  } kCases[] = {{0, 0, 0},      {100, 200, 55}, {50, 77, 127},  {150, 0, 126},
                {-20, 255, 50}, {kMax, 3, 236}, {kMin, 200, 97}};
  for (const auto& c : kCases) {
    std::uint8_t byte = c.before;
    kernels::Invert(&byte, 1, c.percent);
    EXPECT_EQ(byte, c.after) << c.percent;
  }
}

TEST(PointKernels, Fade) {
  const struct {
    std::uint8_t keep, before, after;
  } kCases[] = {{255, 0, 0}, {0, 0, 255}, {127, 100, 178}, {1, 254, 255}, {9, 255, 255}};
  for (const auto& c : kCases) {
    std::uint8_t mask = c.before;
    kernels::Fade(&mask, 1, c.keep);
    EXPECT_EQ(mask, c.after) << int{c.keep};
  }
}

TEST(PointKernels, BlackWhite) {
  const struct {
    Colour before;
    int percent;
    Colour after;
  } kCases[] = {{{10, 20, 30}, 0, {10, 20, 30}},       {{10, 20, 30}, 100, {21, 21, 21}},
                {{1, 254, 3}, 50, {90, 217, 91}},      {{200, 100, 50}, 150, {44, 94, 119}},
                {{200, 100, 50}, -40, {241, 101, 31}}, {{7, 9, 250}, kMax, {108, 69, 242}},
                {{7, 9, 250}, kMin, {161, 204, 4}}};
  for (const auto& c : kCases) {
    EXPECT_EQ(Changed(c.before, [&](std::uint8_t* p) { kernels::BlackWhite(p, 1, c.percent); }),
              c.after);
  }
}

TEST(PointKernels, ColourOffsetIsTruncatedAndCut) {
  const struct {
    int percent, offset;
  } kCases[] = {{0, 0}, {1, 2}, {-1, -2}, {100, 255}, {-100, -255}, {kMax, 255}, {kMin, -255}};
  for (const auto& c : kCases) EXPECT_EQ(kernels::ColourOffset(c.percent), c.offset) << c.percent;
}

TEST(PointKernels, DuoColour) {
  const struct {
    Colour before, shadows, highlights;
    int percent;
    Colour after;
  } kCases[] = {
      {{10, 200, 90}, {0, 0, 0}, {255, 255, 255}, 100, {105, 105, 105}},
      {{10, 200, 90}, {120, 40, 0}, {30, 180, 255}, 100, {110, 87, 77}},
      {{250, 130, 60}, {120, 40, 0}, {30, 180, 255}, 60, {151, 122, 104}},
      {{3, 2, 1}, {255, 0, 0}, {0, 0, 255}, -50, {0, 3, 0}},
      {{250, 251, 252}, {255, 0, 0}, {0, 0, 255}, 250, {0, 0, 249}},
      {{90, 90, 90}, {10, 20, 30}, {0, 0, 0}, kMax, {0, 0, 0}},
  };
  for (const auto& c : kCases) {
    const auto duo = kernels::MakeDuoColours(c.shadows, c.highlights, c.percent);
    EXPECT_EQ(Changed(c.before, [&](std::uint8_t* p) { kernels::DuoColour(p, 1, duo); }), c.after);
  }
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

TEST(PointKernels, MixColour) {
  const struct {
    int percent;
    Colour after;
  } kCases[] = {{0, {10, 200, 90}},
                {35, {6, 219, 60}},
                {100, {0, 255, 7}},
                {-60, {16, 167, 139}},
                {kMax, {62, 45, 183}}};
  for (const auto& c : kCases) {
    EXPECT_EQ(Changed({10, 200, 90},
                      [&](std::uint8_t* p) {
                        kernels::MixColour(p, 1, {0, 255, 7}, c.percent);
                      }),
              c.after);
  }
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

struct MaskedCase {
  std::uint8_t mask;
  int percent;
  Colour colour;
  std::uint8_t after;
};

// Each case starts with the same colour.
template <class Change>
void ExpectMasked(const MaskedCase& c, Change change) {
  std::uint8_t pixel[] = {10, 200, 90, c.mask};
  change(pixel, pixel + 3, c.percent);
  EXPECT_EQ((Colour{pixel[0], pixel[1], pixel[2]}), c.colour)
      << "mask " << int{c.mask} << ", " << c.percent << " percent";
  EXPECT_EQ(pixel[3], c.after) << "mask " << int{c.mask} << ", " << c.percent << " percent";
}

TEST(PointKernels, InvertMask) {
  const MaskedCase kCases[] = {{0, 0, {10, 200, 90}, 0},       {255, 0, {10, 200, 90}, 255},
                               {77, 40, {7, 183, 126}, 117},   {77, 100, {1, 128, 255}, 178},
                               {0, 100, {10, 200, 90}, 255},   {200, 150, {0, 120, 15}, 239},
                               {51, -20, {10, 203, 82}, 20},   {200, kMax, {254, 100, 61}, 48},
                               {200, kMin, {254, 100, 61}, 97}};
  for (const MaskedCase& c : kCases) {
    ExpectMasked(c, [](std::uint8_t* colour, std::uint8_t* mask, int percent) {
      kernels::InvertMask(colour, mask, 1, {1, 128, 255}, percent);
    });
  }
}

TEST(PointKernels, PutBackground) {
  const MaskedCase kCases[] = {{0, 0, {10, 200, 90}, 0},       {255, 0, {180, 128, 255}, 0},
                               {77, 40, {44, 184, 123}, 30},   {255, 99, {170, 85, 255}, 252},
                               {3, 30, {11, 198, 91}, 0},      {77, 100, {10, 200, 90}, 77},
                               {77, kMax, {10, 200, 90}, 77},  {200, -40, {152, 139, 227}, 176},
                               {200, kMin, {179, 128, 254}, 1}};
  for (const MaskedCase& c : kCases) {
    ExpectMasked(c, [](std::uint8_t* colour, std::uint8_t* mask, int percent) {
      kernels::PutBackground(colour, mask, 1, {180, 128, 255}, percent);
    });
  }
}

TEST(PointKernels, PutBackgroundPixel) {
  const MaskedCase kCases[] = {{0, 30, {10, 200, 90}, 0},       {255, 30, {180, 128, 255}, 76},
                               {77, 0, {61, 178, 139}, 0},      {77, 100, {10, 200, 90}, 77},
                               {77, 40, {45, 185, 124}, 30},    {85, 300, {10, 200, 90}, 255},
                               {200, kMin, {179, 128, 254}, 1}, {255, kMax, {180, 128, 255}, 99}};
  for (const MaskedCase& c : kCases) {
    ExpectMasked(c, [](std::uint8_t* colour, std::uint8_t* mask, int percent) {
      kernels::PutBackgroundPixel(colour, mask, {180, 128, 255}, percent);
    });
  }
}

// No division by 0 and no overflow, whatever mask and percentage meet; the sanitizer build looks.
// A mask of 255 shows the bare background as both forms of the composition know it.
TEST(PointKernels, EveryMaskAtEveryPercentage) {
  for (int percent = -300; percent <= 300; ++percent) {
    for (int m = 0; m < 256; ++m) {
      std::uint8_t row[] = {10, 200, 90, static_cast<std::uint8_t>(m)};
      std::uint8_t pixel[] = {10, 200, 90, static_cast<std::uint8_t>(m)};
      kernels::PutBackground(row, row + 3, 1, {180, 128, 255}, percent);
      kernels::PutBackgroundPixel(pixel, pixel + 3, {180, 128, 255}, percent);
      if (percent <= 99) {
        ASSERT_EQ(row[3], pixel[3]) << m << ' ' << percent;
      }
      kernels::InvertMask(row, row + 3, 1, {1, 128, 255}, percent);
      if (percent == 0) {
        ASSERT_EQ(row[3], pixel[3]) << m;
      }
    }
  }
}

}  // namespace
