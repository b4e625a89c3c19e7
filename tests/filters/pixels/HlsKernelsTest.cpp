// The HLS kernels: the plain ones by hand, the fast ones against the plain ones, byte for byte, at
// every level that this processor has.
#include "filters/pixels/HlsKernels.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/filters/pixels/KernelRows.h"

namespace {

using kernels::HlsKernelTable;
using kernels::SimdLevel;
using testing_support::Row;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

const HlsKernelTable& Plain() {
  return kernels::Choose<kernels::HlsKernelTable>(SimdLevel::Plain);
}

kernels::HueFactors SomeFactors() {
  kernels::HueFactors factors;
  for (std::size_t h = 0; h < std::size(factors.byHue); ++h)
    factors.byHue[h] = static_cast<double>(h) / 150.0;
  factors.byHue[17] = 101.0;
  return factors;
}

kernels::HueChanges SomeChanges() {
  kernels::HueChanges changes;
  const kernels::HueFactors factors = SomeFactors();
  for (int h = 0; h < 360; ++h) {
    changes.byHue[h] = {h * 7 % 361 - 180.0, factors.byHue[h], (h * 11 % 201 - 100) / 100.0};
  }
  changes.greyLightness = 0.13;
  return changes;
}

TEST(HlsKernels, ByHand) {
  // Blue, green, red: red, a dull orange, grey, black. Truncation costs the orange a level.
  const Row given = {0, 0, 255, 50, 100, 130, 77, 77, 77, 0, 0, 0};
  const auto changed = [&](auto change) {
    Row row = given;
    change(row.data());
    return row;
  };
  kernels::HueFactors factors;
  factors.byHue[37] = kInfinity;  // of 37.5, the hue of the orange
  EXPECT_EQ(changed([&](auto* row) { kernels::SaturateByHue(row, 4, factors); }),
            (Row{127, 127, 127, 0, 112, 179, 77, 77, 77, 0, 0, 0}));
  EXPECT_EQ(changed([&](auto* row) { kernels::Saturate(row, 4, -3.0); }),
            (Row{127, 127, 127, 89, 89, 89, 77, 77, 77, 0, 0, 0}));
  // Red by half a turn, orange by -90 degrees to 307.5: both ends of the wheel.
  kernels::HueChanges changes;
  changes.greyLightness = 2.0;
  changes.byHue[0] = {180.0, 1.0, 0.25};
  changes.byHue[37] = {-90.0, 1.0, 0.0};
  EXPECT_EQ(changed([&](auto* row) { kernels::ChangeByHue(row, 4, changes); }),
            (Row{255, 255, 127, 120, 50, 130, 255, 255, 255, 255, 255, 255}));
}

class HlsKernelLevels : public testing::TestWithParam<SimdLevel> {
 protected:
  void SetUp() override {
    if (GetParam() > kernels::ProcessorSimdLevel()) GTEST_SKIP() << "not on this processor";
  }
  template <class Run>
  void ExpectSame(const Row& row, Run run) {
    testing_support::ExpectSameRow(Plain(), kernels::Choose<kernels::HlsKernelTable>(GetParam()),
                                   row, run);
  }
};

INSTANTIATE_TEST_SUITE_P(Levels, HlsKernelLevels,
                         testing::Values(SimdLevel::Avx2, SimdLevel::Avx512),
                         [](const auto& level) { return kernels::SimdLevelName(level.param); });

// Every width around the size of a vector, at every alignment; the row before and behind is a
// guard.
TEST_P(HlsKernelLevels, KeepInsideTheRow) {
  const HlsKernelTable& own = kernels::Choose<kernels::HlsKernelTable>(GetParam());
  EXPECT_NE(own.saturate, Plain().saturate);
  EXPECT_NE(own.saturateByHue, Plain().saturateByHue);
  EXPECT_NE(own.changeByHue, Plain().changeByHue);
  const kernels::HueFactors factors = SomeFactors();
  const kernels::HueChanges changes = SomeChanges();
  for (int width = -1; width <= 200; ++width) {
    const int start = 96 + (width & 63);
    const Row row = testing_support::RandomRow(static_cast<std::size_t>(start + 3 * width + 200),
                                               static_cast<unsigned>(width));
    ExpectSame(row, [&](auto& k, std::uint8_t* at) {
      k.saturate(at + start, width, 0.7);
      k.saturateByHue(at + start, width, factors);
      k.changeByHue(at + start, width, changes);
    });
  }
}

// Every grey and every 43rd of all other colours, which are enough to meet all sectors, limits and
// ties; a fused or reordered operation shows in thousands of them. Also every pair of a largest and
// a smallest channel, which all saturations come from.
TEST_P(HlsKernelLevels, Colours) {
  Row row;
  for (int pair = 0; pair < 1 << 16; ++pair) {
    const auto first = static_cast<std::uint8_t>(pair),
               second = static_cast<std::uint8_t>(pair >> 8);
    row.insert(row.end(), {first, second, first});
  }
  for (int i = 0; i < 1 << 24; i += i < 256 ? 1 : 43) {
    const int colour = i < 256 ? i * 0x010101 : i;
    for (const int shift : {0, 8, 16}) row.push_back(static_cast<std::uint8_t>(colour >> shift));
  }
  const int width = static_cast<int>(row.size() / 3);
  for (const double factor : {1.0, 0.0, 0.37, 2.5, -0.5, 1e-6, kInfinity}) {
    ExpectSame(row, [&](auto& k, std::uint8_t* at) { k.saturate(at, width, factor); });
  }
  kernels::HueFactors factors = SomeFactors();
  factors.byHue[200] = kInfinity;
  ExpectSame(row, [&](auto& k, std::uint8_t* at) { k.saturateByHue(at, width, factors); });
  const kernels::HueChanges changes = SomeChanges();
  ExpectSame(row, [&](auto& k, std::uint8_t* at) { k.changeByHue(at, width, changes); });
}

}  // namespace
