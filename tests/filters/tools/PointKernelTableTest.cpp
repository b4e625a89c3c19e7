// The fast point kernels against the plain ones, byte for byte, at every level that this processor
// has.
#include "filters/tools/PointKernelTable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <random>
#include <vector>

namespace {

using kernels::PointKernelTable;
using kernels::SimdLevel;
using Row = std::vector<std::uint8_t>;

Row RandomRow(std::size_t bytes, unsigned seed) {
  std::mt19937 random(seed);
  Row row(bytes);
  for (std::uint8_t& byte : row) {
    const auto value = random();
    byte = static_cast<std::uint8_t>(value % 8 == 0 ? (value >> 8 & 1) * 255 : value >> 16);
  }
  return row;
}

class PointKernelLevels : public testing::TestWithParam<SimdLevel> {
 protected:
  void SetUp() override {
    if (GetParam() > kernels::ProcessorSimdLevel()) GTEST_SKIP() << "not on this processor";
  }

  // Runs the same on the same row with the plain kernels and with the level's.
  template <class Run>
  void ExpectSame(const Row& row, Run run) {
    Row expected = row;
    Row found = row;
    run(plain, expected.data());
    run(kernels::PointKernelsFor(GetParam()), found.data());
    if (expected == found) return;
    std::size_t at = 0;
    while (expected[at] == found[at]) ++at;
    ADD_FAILURE() << "byte " << at << ": " << int{found[at]} << ", expected " << int{expected[at]};
  }

  const PointKernelTable& plain = kernels::PointKernelsFor(SimdLevel::Plain);
};

INSTANTIATE_TEST_SUITE_P(Levels, PointKernelLevels,
                         testing::Values(SimdLevel::Avx2, SimdLevel::Avx512),
                         [](const auto& level) { return kernels::SimdLevelName(level.param); });

TEST_P(PointKernelLevels, HasKernelsOfItsOwn) {
  const PointKernelTable& own = kernels::PointKernelsFor(GetParam());
  for (const SimdLevel level : kernels::kSimdLevels) {
    if (level == GetParam()) continue;
    const PointKernelTable& other = kernels::PointKernelsFor(level);
    EXPECT_NE(own.sepia, other.sepia);
    EXPECT_NE(own.mapBytes, other.mapBytes);
    EXPECT_NE(own.blackWhite, other.blackWhite);
    EXPECT_NE(own.shiftColours, other.shiftColours);
  }
}

// Every width around the size of a vector, at every alignment; the row before and behind is a
// guard.
TEST_P(PointKernelLevels, KeepInsideTheRow) {
  constexpr int kGuard = 96;
  const kernels::ByteTable table = kernels::BuildInvertTable(37);
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
      k.mapBytes(at + start, static_cast<std::size_t>(width), table.data());
    });
  }
  ExpectSame(RandomRow(64, 1), [](auto& k, std::uint8_t* at) {
    k.sepia(at + 32, -1, 90);
    k.blackWhite(at + 32, -1, 70);
    k.shiftColours(at + 32, -1, {17, -200, 90});
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

TEST_P(PointKernelLevels, EveryByteThroughEveryShiftAndTable) {
  Row row;
  for (int i = 0; i < 3 * 256; ++i) row.push_back(static_cast<std::uint8_t>(i / 3));
  for (int shift = -255; shift <= 255; ++shift) {
    ExpectSame(row, [&](auto& k, std::uint8_t* at) {
      k.shiftColours(at, 256, {shift, -shift, shift / 2});
    });
    const Row table = RandomRow(256, static_cast<unsigned>(shift + 255));
    ExpectSame(row, [&](auto& k, std::uint8_t* at) { k.mapBytes(at, row.size(), table.data()); });
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
  EXPECT_EQ(&kernels::ActivePointKernels(), &kernels::PointKernelsFor(active));
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
