#include "filters/pixels/LuminanceKernels.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "filters/pixels/Histogram.h"

namespace {

using kernels::LuminanceKernelTable;
using kernels::SimdLevel;
using Row = std::vector<std::uint8_t>;

// The fast kernels against the plain ones, byte for byte, at every level that this processor has:
// all widths around the size of a vector, a guard ahead of the row and behind it. The long row
// holds most pairs of a luminance and a level.
TEST(LuminanceKernels, AllLevelsGiveTheSameBytes) {
  constexpr std::size_t kGuard = 70;
  constexpr LuminanceKernelTable kPlain = {kernels::Luminance, kernels::ReplaceLuminance,
                                           kernels::ScaleByLuminance, kernels::MoveFromGrey};
  std::mt19937 random(6);
  std::vector<int> widths = {-1, 100000};
  for (int width = 0; width <= 200; ++width) widths.push_back(width);
  for (const int width : widths) {
    const auto below = [&random](unsigned end) { return static_cast<double>(random() % end); };
    kernels::ByteTable table;
    kernels::LuminanceFactors factors;
    for (std::size_t i = 0; i < table.size(); ++i) {
      table[i] = static_cast<std::uint8_t>(random());
      factors[i] = i % 9 == 0 ? 1000.0 : below(3000) / (i % 2 ? 510.0 : 1000.0);
    }
    const auto move = [&] {
      return kernels::BuildGreyMove(width % 5 == 4 ? -1.0 : below(300) / 100.0);
    };
    const kernels::GreyMoves moves = {move(), move(), move()};
    Row row(static_cast<std::size_t>(std::max(width, 0)) * 3 + 2 * kGuard);
    for (std::uint8_t& byte : row) byte = static_cast<std::uint8_t>(random());

    const auto run = [&](const LuminanceKernelTable& k) {
      std::vector<Row> results(4, row);
      k.luminance(&results[0][kGuard], &row[kGuard], width);
      k.replaceLuminance(&results[1][kGuard], width, table);
      k.scaleByLuminance(&results[2][kGuard], width, factors);
      k.moveFromGrey(&results[3][kGuard], width, moves);
      return results;
    };
    const std::vector<Row> expected = run(kPlain);
    for (const SimdLevel level : kernels::kSimdLevels) {
      if (level > kernels::ProcessorSimdLevel()) continue;
      const LuminanceKernelTable& k = kernels::Choose<kernels::LuminanceKernelTable>(level);
      ASSERT_EQ(level == SimdLevel::Plain, k.luminance == kernels::Luminance);
      ASSERT_EQ(run(k), expected) << kernels::SimdLevelName(level) << ", width " << width;
    }
  }
}

// Each level as often as its number and one, in any two parts.
TEST(LevelCounters, AddUpToTheWhole) {
  Row levels;
  for (int level = 0; level < 256; ++level) {
    levels.insert(levels.end(), static_cast<std::size_t>(level) + 1,
                  static_cast<std::uint8_t>(level));
  }
  const int all = static_cast<int>(levels.size());
  for (const int first : {0, 1, 6, 1000, all}) {
    kernels::LevelCounter counter, rest;
    counter.Add(levels.data(), first);
    rest.Add(levels.data() + first, all - first);
    const kernels::Histogram total = (counter += rest).Total();
    for (std::uint32_t level = 0; level < 256; ++level) EXPECT_EQ(total[level], level + 1) << first;
  }
}

}  // namespace
