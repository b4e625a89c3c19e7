// The 3 x 3 convolution at every level that this processor has, against the plain one, byte
// for byte.
#include "filters/pixels/Convolution.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "filters/pixels/ConvolutionRow.h"
#include "tests/filters/pixels/KernelRows.h"

namespace {

using kernels::KernelTable;
using kernels::SimdLevel;
using testing_support::RandomRow;
using testing_support::Row;

constexpr const KernelTable* kTables[] = {&kernels::kSharpenTable, &kernels::kSoftenTable,
                                          &kernels::kFindEdgesTable, &kernels::kEmbossTable};
constexpr std::size_t kGuard = 3 * 64;

// Three rows with a pixel on either side and their masks; `result` has guard bytes.
struct Rows {
  Rows(int rowWidth, unsigned seed, bool masked) : width(rowWidth) {
    for (int i = 0; i < 3; ++i) {
      colour[i] =
          RandomRow(Bytes() + 6 + kernels::kConvolutionPadding, seed + static_cast<unsigned>(i));
      nothing[i].assign(colour[i].size(), 0);
      const Row mask = RandomRow(static_cast<std::size_t>(width) + 2, seed + 7);
      for (std::size_t x = 0; x < mask.size(); ++x) {
        const bool edge = x == 0 || x == mask.size() - 1;
        // Masked pixels come in runs, so that blocks without one occur.
        const bool isNothing = edge || (masked && x / 50 % 2 == 0 && mask[x] % 3 == 0);
        std::fill_n(nothing[i].begin() + static_cast<std::ptrdiff_t>(3 * x), 3,
                    isNothing ? 255 : 0);
      }
      view.colour[i] = colour[i].data() + 3;
      view.nothing[i] = nothing[i].data() + 3;
    }
    view.anyNothing = masked;
    view.next = colour[2].data();
  }
  std::size_t Bytes() const { return 3 * static_cast<std::size_t>(width); }

  Row Run(const kernels::Kernel3x3& kernel, SimdLevel level) const {
    Row result(Bytes() + 2 * kGuard, 77);
    kernels::Choose<kernels::ConvolutionKernels>(level).convolveRow(kernel, view,
                                                                    result.data() + kGuard, width);
    return result;
  }

  int width;
  Row colour[3], nothing[3];
  kernels::ConvolutionRows view;
};

class ConvolutionLevels : public testing::TestWithParam<SimdLevel> {
 protected:
  void SetUp() override {
    if (GetParam() > kernels::ProcessorSimdLevel()) GTEST_SKIP() << "not on this processor";
  }
  void ExpectSame(const Rows& rows, const KernelTable& table, double strength) {
    const auto kernel = kernels::BlendKernel(table, strength);
    ASSERT_EQ(rows.Run(kernel, SimdLevel::Plain), rows.Run(kernel, GetParam()))
        << "strength " << strength << ", width " << rows.width;
  }
};

INSTANTIATE_TEST_SUITE_P(Levels, ConvolutionLevels,
                         testing::Values(SimdLevel::Avx2, SimdLevel::Avx512),
                         [](const auto& level) { return kernels::SimdLevelName(level.param); });

TEST_P(ConvolutionLevels, EqualThePlainOne) {
  for (const KernelTable* table : kTables) {
    for (const bool masked : {false, true}) {
      for (int strength = 0; strength <= 255; ++strength) {
        ExpectSame({400, static_cast<unsigned>(strength), masked}, *table, strength);
      }
      for (const double strength : {25.0, 6.25, 33.3, 99.99, 1e-7, 300.0, 12345.678, HUGE_VAL,
                                    -HUGE_VAL, -40.5, std::nan("")}) {
        ExpectSame({400, 5, masked}, *table, strength);
      }
      for (int width = 1; width <= 100; ++width) {
        ExpectSame({width, 11, masked}, *table, 77);
        ExpectSame({width, 13, masked}, *table, 77.7);
      }
    }
  }
}

TEST_P(ConvolutionLevels, SpreadNothingLikeThePlainOne) {
  using kernels::ConvolutionKernels;
  for (int width = 0; width <= 200; ++width) {
    const Row mask = RandomRow(static_cast<std::size_t>(width), static_cast<unsigned>(width));
    testing_support::ExpectSameRow(
        ConvolutionKernels::Plain(), kernels::Choose<ConvolutionKernels>(GetParam()),
        Row(mask.size() * 3 + 200, 77), [&](const ConvolutionKernels& k, std::uint8_t* at) {
          k.spreadNothing(at + width % 64, mask.data(), width);
        });
  }
}

// The sums that the tables can reach, at every whole strength: the quotient of the fast paths is
// the exact one.
TEST_P(ConvolutionLevels, EverySumAtEveryStrength) {
  Rows rows(5 * 256, 1, false);
  for (std::size_t x = 1; x <= 5 * 256; ++x) {
    // Upright stripes with a centre of every level, and ends around it.
    const std::size_t level = (x - 1) % 256;
    for (std::size_t i = 0; i < 9; i += 3) {
      const auto byte = static_cast<std::uint8_t>(i == 3 ? level : (x / 256 * 64 + i * 31) & 255);
      std::fill_n(rows.colour[i / 3].begin() + static_cast<std::ptrdiff_t>(3 * x), 3, byte);
    }
  }
  for (const KernelTable* table : kTables) {
    for (int strength = 0; strength <= 255; ++strength) ExpectSame(rows, *table, strength);
  }
}

// An area sees what lies around it and leaves that alone, or everything when its rows go elsewhere;
// rows end in an abort.
TEST(Convolution, AreaInPlaceAndElsewhere) {
  const Row given = RandomRow(20 * 30 * 3, 4);
  const auto rowsOf = [](Row& picture, std::size_t stride, std::size_t from) {
    std::vector<BYTE*> rows;
    for (std::size_t y = 0; y < 20; ++y) rows.push_back(picture.data() + y * stride + from);
    return rows;
  };
  Row whole = given;
  Row part = given;
  Row elsewhere = given;
  Row masks = RandomRow(20 * 30, 5);
  Row maskResult(20 * 30, 7);
  auto wholeRows = rowsOf(whole, 90, 6);
  auto partRows = rowsOf(part, 90, 6);
  auto maskRows = rowsOf(masks, 30, 2);
  auto elsewhereRows = rowsOf(elsewhere, 90, 15);
  auto maskResultRows = rowsOf(maskResult, 30, 5);
  const base::WritableRows result = {elsewhereRows.data() + 5, maskResultRows.data() + 5, 24, 7};
  const auto kernel = kernels::BlendKernel(kernels::kFindEdgesTable, 60);
  std::atomic<bool> abort{false};
  const auto picture = [&](auto& rows) {
    return base::WritableRows{rows.data() + 1, maskRows.data() + 1, 27, 18};
  };
  EXPECT_TRUE(kernels::Convolve3x3(kernel, picture(wholeRows), {3, 4, 24, 7}, result, abort));
  ASSERT_EQ(whole, given);
  EXPECT_TRUE(kernels::Convolve3x3(kernel, picture(wholeRows), {0, 0, 27, 18}, abort));
  EXPECT_TRUE(kernels::Convolve3x3(kernel, picture(partRows), {3, 4, 24, 7}, abort));
  EXPECT_EQ(elsewhere, part);
  abort = true;
  EXPECT_FALSE(kernels::Convolve3x3(kernel, picture(partRows), {0, 0, 27, 18}, abort));
  EXPECT_FALSE(kernels::Convolve3x3(kernel, picture(partRows), {3, 4, 24, 7}, result, abort));
  EXPECT_EQ(elsewhere, part);
  for (std::size_t at = 0; at < masks.size(); ++at) {
    const bool inside = at / 30 >= 5 && at / 30 < 12 && at % 30 >= 5 && at % 30 < 29;
    ASSERT_EQ(maskResult[at], inside ? masks[at] : 7) << at;
  }
  for (std::size_t at = 0; at < given.size(); ++at) {
    const std::size_t y = at / 90, x = at % 90 / 3;
    const bool inside = y >= 5 && y < 12 && x >= 5 && x < 29;
    ASSERT_EQ(part[at], inside ? whole[at] : given[at]) << y << " " << x;
  }
}

}  // namespace
