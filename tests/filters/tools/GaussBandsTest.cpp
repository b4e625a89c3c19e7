// The Gaussian methods on rows: every vector unit gives the same bytes, and what must stay stays.
#include "filters/tools/GaussBands.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "tests/filters/tools/KernelRows.h"

namespace {

using kernels::GaussChange;
using kernels::GaussMethod;
using kernels::SimdLevel;
using testing_support::RandomRow;
using testing_support::Row;

// Rows of one block at any order and distance, with guard bytes around each.
constexpr int kGuard = 70;
std::vector<std::uint8_t*> RowsIn(Row& block, int width, int height) {
  std::vector<std::uint8_t*> rows;
  for (int y = 0; y < height; ++y) {
    rows.push_back(block.data() + kGuard + (y * 7 % height) * (3 * width + kGuard));
  }
  return rows;
}
Row RandomBlock(int width, int height) {
  return RandomRow(static_cast<std::size_t>(kGuard + height * (3 * width + kGuard)), 7);
}

GaussChange Change(GaussMethod method, int radius, double sigma, float amount = 1.2f) {
  GaussChange change = {method, kernels::MakeGaussTaps(radius, sigma), 7.0f, amount};
  if (method != GaussMethod::SelectiveBlur) kernels::NormalizeGaussTaps(change.taps);
  return change;
}

Row Changed(Row block, int width, int height, const GaussChange& change,
            SimdLevel level = kernels::ActiveSimdLevel()) {
  const std::atomic<bool> abort{false};
  const auto rows = RowsIn(block, width, height);
  EXPECT_TRUE(kernels::ChangeByGauss(rows.data(), width, height, change, level, abort));
  return block;
}

constexpr GaussMethod kMethods[] = {GaussMethod::Blur, GaussMethod::Sharpen,
                                    GaussMethod::SharpenBrightness, GaussMethod::SelectiveBlur};

TEST(GaussBands, EveryVectorUnitGivesTheSameBytes) {
  const std::tuple<int, int, int> kSizes[] = {{1, 1, 1},     {1, 50, 3},   {50, 1, 3},
                                              {16, 17, 1},   {17, 5, 2},   {33, 40, 7},
                                              {130, 70, 30}, {31, 9, 200}, {8300, 3, 2}};
  for (const SimdLevel level : kernels::kSimdLevels) {
    if (level > kernels::ProcessorSimdLevel()) continue;
    EXPECT_TRUE(level == SimdLevel::Plain ||
                kernels::GaussKernelsFor(level).blur.blurLine !=
                    kernels::GaussKernelsFor(SimdLevel::Plain).blur.blurLine);
    for (const auto& [width, height, radius] : kSizes) {
      for (const GaussMethod method : kMethods) {
        const Row block = RandomBlock(width, height);
        const GaussChange change = Change(method, radius, radius * 0.6);
        const Row plain = Changed(block, width, height, change, SimdLevel::Plain);
        ASSERT_TRUE(plain == Changed(block, width, height, change, level))
            << width << ' ' << height;
        // The guards are what they were.
        Row guards = plain;
        Row before = block;
        for (auto* rows : {&guards, &before}) {
          for (std::uint8_t* row : RowsIn(*rows, width, height)) std::fill_n(row, 3 * width, 0);
        }
        ASSERT_TRUE(guards == before);
      }
    }
  }
}

void Mirror(Row& block, int width, int height) {
  for (std::uint8_t* row : RowsIn(block, width, height)) {
    std::reverse(row, row + 3 * width);
    for (int x = 0; x < width; ++x) std::swap(row[3 * x], row[3 * x + 2]);
  }
}

// Strips of columns end at other pixels in a mirrored picture.
TEST(GaussBands, AMirroredPictureGivesAMirroredResult) {
  for (const auto& [width, height, radius] :
       {std::tuple(20000, 3, 60), {9000, 2, 2}, {9000, 1, 8500}}) {
    for (const GaussMethod method : kMethods) {
      Row block = RandomBlock(width, height);
      const GaussChange change = Change(method, radius, radius * 0.6);
      const Row expected = Changed(block, width, height, change);
      Mirror(block, width, height);
      Row found = Changed(block, width, height, change);
      Mirror(found, width, height);
      ASSERT_TRUE(found == expected) << width << ' ' << radius;
    }
  }
}

TEST(GaussBands, FlatAreasAndEvenSlopesStay) {
  constexpr int kWidth = 40, kHeight = 3;
  Row block(RandomBlock(kWidth, kHeight).size());
  for (const GaussMethod method : kMethods) {
    for (const int radius : {1, 2, 5, 19, 120, 1000}) {
      for (const float amount : {-3.0f, 1.2f, 2e7f}) {
        const GaussChange change = Change(method, radius, radius * 0.43, amount);
        for (int level = 0; level < 256; ++level) {
          for (std::size_t i = 0; i < block.size(); ++i) {
            block[i] = static_cast<std::uint8_t>(level * (1 + (i - kGuard) % 3));
          }
          ASSERT_TRUE(Changed(block, kWidth, 1, change) == block) << level << ' ' << radius;
        }
      }
    }
    // Away from the edges.
    const auto rows = RowsIn(block, kWidth, kHeight);
    for (int i = 0; i < 3 * kWidth; ++i) rows[0][i] = static_cast<std::uint8_t>(20 + i / 3 * 5);
    Row found = Changed(block, kWidth, 1, Change(method, 9, 4.1, 2e7f));
    EXPECT_TRUE(std::equal(rows[0] + 30, rows[0] + 90, found.data() + kGuard + 30));
  }
}

}  // namespace
