// The fast point kernels against the plain ones, byte for byte, at every level that this processor
// has.
#include "filters/pixels/PointKernelTable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <vector>

#include "tests/filters/pixels/KernelRows.h"

namespace {

using kernels::PointKernelTable;
using kernels::SimdLevel;
using testing_support::RandomRow;
using testing_support::Row;

constexpr PointKernelTable kReference = {
    kernels::Sepia, kernels::BlackWhite, kernels::ShiftColours, kernels::Invert,
    kernels::Fade,  kernels::InvertMask, kernels::PutBackground};

class PointKernelLevels : public testing::TestWithParam<SimdLevel> {
 protected:
  void SetUp() override {
    if (GetParam() > kernels::ProcessorSimdLevel()) GTEST_SKIP() << "not on this processor";
  }

  // Runs the same on the same row with the readable kernels and with the level's.
  template <class Run>
  void ExpectSame(const Row& row, Run run) {
    testing_support::ExpectSameRow(
        kReference, kernels::Choose<kernels::PointKernelTable>(GetParam()), row, run);
  }
};

INSTANTIATE_TEST_SUITE_P(Levels, PointKernelLevels, testing::ValuesIn(kernels::kSimdLevels),
                         [](const auto& level) { return kernels::SimdLevelName(level.param); });

TEST_P(PointKernelLevels, HasKernelsOfItsOwn) {
  const PointKernelTable& own = kernels::Choose<kernels::PointKernelTable>(GetParam());
  for (const SimdLevel level : kernels::kSimdLevels) {
    if (level == GetParam()) continue;
    const PointKernelTable& other = kernels::Choose<kernels::PointKernelTable>(level);
    EXPECT_NE(own.sepia, other.sepia);
    EXPECT_NE(own.blackWhite, other.blackWhite);
    EXPECT_NE(own.shiftColours, other.shiftColours);
    EXPECT_NE(own.invert, other.invert);
    EXPECT_NE(own.fade, other.fade);
    EXPECT_NE(own.invertMask, other.invertMask);
    EXPECT_NE(own.putBackground, other.putBackground);
  }
}

// The rows that are read stay.
TEST_P(PointKernelLevels, MixMasksFromRowToRow) {
  for (const int width : {1, 63, 64, 150}) {
    const int end = 4 * width;
    ExpectSame(RandomRow(static_cast<std::size_t>(3 * end), 6), [&](auto& k, std::uint8_t* at) {
      const std::uint8_t* const from = at + 2 * end;
      for (const int percent : {-1, 0, 30, 100}) {
        k.invertMask({at, at + 3 * width}, {from, from + 3 * width}, width, {1, 128, 255}, percent);
        k.putBackground({at + end, at + end + 3 * width}, {from, from + 3 * width}, width,
                        {180, 128, 255}, percent);
      }
    });
  }
}

// Every width around the size of a vector, at every alignment; the row before and behind is a
// guard.
TEST_P(PointKernelLevels, KeepInsideTheRow) {
  constexpr int kGuard = 96;
  for (int width = 0; width <= 200; ++width) {
    const int start = kGuard + width % 64;
    const Row row = RandomRow(static_cast<std::size_t>(start + 3 * width + kGuard),
                              static_cast<unsigned>(width));
    ExpectSame(row, [&](auto& k, std::uint8_t* at) { k.sepia(at + start, width, 90); });
    ExpectSame(row, [&](auto& k, std::uint8_t* at) { k.blackWhite(at + start, width, 70); });
    ExpectSame(row, [&](auto& k, std::uint8_t* at) {
      k.shiftColours(at + start, width, {17, -200, 90});
    });
    ExpectSame(row, [&](auto& k, std::uint8_t* at) {
      k.invert(at + start, static_cast<std::size_t>(width), 37);
      k.fade(at + start + width, static_cast<std::size_t>(width), 90);
    });
    // The mask is part of the same row, behind a guard of its own.
    const Row both = RandomRow(static_cast<std::size_t>(start + 4 * width + 2 * kGuard), 5);
    const int mask = start + 3 * width + kGuard;
    ExpectSame(both, [&](auto& k, std::uint8_t* at) {
      k.invertMask({at + start, at + mask}, {at + start, at + mask}, width, {1, 128, 255}, 40);
      k.putBackground({at + start, at + mask}, {at + start, at + mask}, width, {180, 128, 255}, 30);
    });
  }
  ExpectSame(RandomRow(64, 1), [](auto& k, std::uint8_t* at) {
    k.sepia(at + 32, -1, 90);
    k.blackWhite(at + 32, -1, 70);
    k.shiftColours(at + 32, -1, {17, -200, 90});
    k.invertMask({at, at + 32}, {at, at + 32}, -1, {1, 128, 255}, 40);
    k.putBackground({at, at + 32}, {at, at + 32}, -1, {180, 128, 255}, 30);
  });
}

// Every pair of two channels, the third between; grey pixels among them pair each lightness with
// each byte.
Row AllPairs() {
  Row row;
  for (int a = 0; a < 256; ++a) {
    for (int b = 0; b < 256; ++b) {
      const int c = a ^ (b * 5 & 255);
      for (const int channel : {a, b, c}) row.push_back(static_cast<std::uint8_t>(channel));
    }
  }
  return row;
}

TEST_P(PointKernelLevels, SepiaAtEveryShare) {
  const Row row = AllPairs();
  for (int keep = 0; keep < 256; ++keep) {
    ExpectSame(row, [&](auto& k, std::uint8_t* at) {
      k.sepia(at, 256 * 256, static_cast<std::uint8_t>(keep));
    });
  }
}

TEST_P(PointKernelLevels, BlackWhiteAtEveryPercentage) {
  const Row row = AllPairs();
  for (int percent = 0; percent <= 100; ++percent) {
    ExpectSame(row, [&](auto& k, std::uint8_t* at) { k.blackWhite(at, 256 * 256, percent); });
  }
  const Row few = RandomRow(3 * 300, 7);
  constexpr int kMax = std::numeric_limits<int>::max();
  std::vector<int> percentages = {kMax, -kMax - 1};
  for (int percent = -300; percent <= 300; ++percent) percentages.push_back(percent);
  for (const int percent : percentages) {
    ExpectSame(few, [&](auto& k, std::uint8_t* at) { k.blackWhite(at, 300, percent); });
  }
}

// The grey of every colour there is.
TEST_P(PointKernelLevels, GreyOfEveryColour) {
  for (int blue = 0; blue < 256; ++blue) {
    Row row;
    row.reserve(256 * 256 * 3);
    for (int i = 0; i < 256 * 256; ++i) {
      for (const int channel : {blue, i >> 8, i & 255}) {
        row.push_back(static_cast<std::uint8_t>(channel));
      }
    }
    ExpectSame(row, [](auto& k, std::uint8_t* at) { k.blackWhite(at, 256 * 256, 100); });
  }
}

TEST_P(PointKernelLevels, EveryByteThroughEveryShift) {
  Row row;
  for (int i = 0; i < 3 * 256; ++i) row.push_back(static_cast<std::uint8_t>(i / 3));
  for (int shift = -255; shift <= 255; ++shift) {
    ExpectSame(row, [&](auto& k, std::uint8_t* at) {
      k.shiftColours(at, 256, {shift, -shift, shift / 2});
    });
  }
}

TEST_P(PointKernelLevels, EveryByteInvertedAndFaded) {
  Row row;
  for (int i = 0; i < 256; ++i) row.push_back(static_cast<std::uint8_t>(i));
  for (int percent = -300; percent <= 300; ++percent) {
    ExpectSame(row, [&](auto& k, std::uint8_t* at) { k.invert(at, 256, percent); });
  }
  for (int i = 0; i < 256; ++i) {
    const auto keep = static_cast<std::uint8_t>(i);
    ExpectSame(row, [&](auto& k, std::uint8_t* at) { k.fade(at, 256, keep); });
  }
}

// Three channels and a mask of every pair of both, the channels of a pixel apart from each other.
struct ColourAndMask {
  static constexpr int kWidth = 256 * 256;
  static constexpr int kMask = 3 * kWidth;  // where the mask begins
  static Row Make() {
    Row row;
    for (int i = 0; i < kMask; ++i) row.push_back(static_cast<std::uint8_t>(i / 3 + i % 3 * 85));
    for (int i = 0; i < kWidth; ++i) row.push_back(static_cast<std::uint8_t>(i >> 8));
    return row;
  }
};

TEST_P(PointKernelLevels, EveryMaskWithEveryByteAtEveryPercentage) {
  constexpr int kWidth = ColourAndMask::kWidth;
  constexpr int kMask = ColourAndMask::kMask;
  const Row row = ColourAndMask::Make();
  for (int percent = -1; percent <= 101; ++percent) {
    for (const kernels::Colour fill : {kernels::Colour{0, 128, 255}, {1, 77, 254}}) {
      ExpectSame(row, [&](auto& k, std::uint8_t* at) {
        k.invertMask({at, at + kMask}, {at, at + kMask}, kWidth, fill, percent);
      });
      ExpectSame(row, [&](auto& k, std::uint8_t* at) {
        k.putBackground({at, at + kMask}, {at, at + kMask}, kWidth, fill, percent);
      });
    }
  }
  constexpr int kMax = std::numeric_limits<int>::max();
  for (const int percent : {-kMax - 1, -300, 300, kMax}) {
    ExpectSame(RandomRow(4 * 99, 3), [&](auto& k, std::uint8_t* at) {
      k.invertMask({at, at + 3 * 99}, {at, at + 3 * 99}, 99, {1, 128, 255}, percent);
      k.putBackground({at, at + 3 * 99}, {at, at + 3 * 99}, 99, {1, 128, 255}, percent);
    });
  }
}

TEST(SimdLevels, EnvironmentOnlyLimits) {
  using kernels::LimitSimdLevel;
  const struct {
    SimdLevel highest;
    const char* limit;
    SimdLevel level;
  } kCases[] = {{SimdLevel::Avx512, nullptr, SimdLevel::Avx512},
                {SimdLevel::Avx512, "avx512", SimdLevel::Avx512},
                {SimdLevel::Avx512, "avx2", SimdLevel::Avx2},
                {SimdLevel::Avx512, "plain", SimdLevel::Plain},
                {SimdLevel::Avx512, "", SimdLevel::Avx512},
                {SimdLevel::Avx512, "AVX2", SimdLevel::Avx512},
                {SimdLevel::Avx2, "avx512", SimdLevel::Avx2},
                {SimdLevel::Plain, "avx2", SimdLevel::Plain}};
  for (const auto& c : kCases) EXPECT_EQ(LimitSimdLevel(c.highest, c.limit), c.level);

  const SimdLevel active = LimitSimdLevel(kernels::ProcessorSimdLevel(), std::getenv("FXBOX_SIMD"));
  EXPECT_EQ(kernels::ActiveSimdLevel(), active);
  EXPECT_EQ(&kernels::Choose<kernels::PointKernelTable>(),
            &kernels::Choose<kernels::PointKernelTable>(active));
}

// The plain shift in bytes against the sum in integers.
TEST(PlainKernels, ShiftColoursAddsAndLimits) {
  for (int shift = -255; shift <= 255; ++shift) {
    Row row;
    for (int i = 0; i < 3 * 256; ++i) row.push_back(static_cast<std::uint8_t>(i / 3));
    kernels::ShiftColours(row.data(), 256, {shift, -shift, 0});
    for (int i = 0; i < 256; ++i) {
      const auto at = static_cast<std::size_t>(3 * i);
      ASSERT_EQ(row[at], std::clamp(i + shift, 0, 255));
      ASSERT_EQ(row[at + 1], std::clamp(i - shift, 0, 255));
      ASSERT_EQ(row[at + 2], i);
    }
  }
}

}  // namespace
