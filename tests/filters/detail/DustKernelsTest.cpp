// The search for dust at every level that this processor has, against the plain one.
#include "filters/detail/DustKernels.h"

#include <gtest/gtest.h>

#include "tests/filters/pixels/KernelRows.h"

namespace {

using kernels::DustKernelTable;
using kernels::SimdLevel;
using testing_support::RandomRow;
using testing_support::Row;

// Eleven rows with the marks of the middle one, for one width.
void ExpectSame(const DustKernelTable& plain, const DustKernelTable& fast, int width,
                const kernels::DustLimits& limits, unsigned seed) {
  const auto count = static_cast<std::size_t>(width);
  const Row colour = RandomRow(3 * count * kernels::kDustRows, seed);
  std::vector<std::uint16_t> sums[2][kernels::kDustRows];
  const std::uint16_t* views[2][kernels::kDustRows];
  Row marks[2];
  for (int side = 0; side < 2; ++side) {
    const DustKernelTable& table = side ? fast : plain;
    for (std::size_t y = 0; y < kernels::kDustRows; ++y) {
      auto& row = sums[side][y];
      row.assign(kernels::kDustReach + count + kernels::kDustPadding, kernels::kNoSum);
      // The first rows lie outside the picture.
      if (y >= seed % 4)
        table.addChannels(colour.data() + 3 * count * y, width, row.data() + kernels::kDustReach);
      views[side][y] = row.data() + kernels::kDustReach;
    }
    marks[side].assign(count + 64, 77);
    table.findDust(views[side], width, limits, marks[side].data());
  }
  for (std::size_t y = 0; y < kernels::kDustRows; ++y) ASSERT_EQ(sums[0][y], sums[1][y]);
  ASSERT_EQ(marks[0], marks[1]) << "width " << width << ", tolerance " << limits.tolerance;
}

TEST(DustKernels, FastEqualPlain) {
  const DustKernelTable& plain = kernels::Choose<kernels::DustKernelTable>(SimdLevel::Plain);
  for (const SimdLevel level : {SimdLevel::Avx2, SimdLevel::Avx512}) {
    if (level > kernels::ProcessorSimdLevel()) continue;
    const DustKernelTable& fast = kernels::Choose<kernels::DustKernelTable>(level);
    ASSERT_NE(plain.findDust, fast.findDust);
    for (int width = 1; width <= 140; ++width) {
      for (const kernels::DustLimits& limits : {kernels::DustLimits{45, 5},
                                                {90, 15},
                                                {200, 40},
                                                {0, 5},
                                                {766, 120},
                                                {766, 121},
                                                {1, 0},
                                                {0, -1}}) {
        ExpectSame(plain, fast, width, limits, static_cast<unsigned>(width));
      }
    }
  }
}

}  // namespace
