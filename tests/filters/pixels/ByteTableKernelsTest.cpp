#include "filters/pixels/ByteTableKernels.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace {

using kernels::ByteTable;
using kernels::SimdLevel;
using Row = std::vector<std::uint8_t>;

Row RandomRow(std::size_t bytes, std::mt19937& random) {
  Row row(bytes);
  for (std::uint8_t& byte : row) byte = static_cast<std::uint8_t>(random());
  return row;
}

ByteTable RandomTable(std::mt19937& random) {
  ByteTable table;
  for (std::uint8_t& entry : table) entry = static_cast<std::uint8_t>(random());
  return table;
}

// At every level, all widths around the size of a vector, to another row and in place; what lies
// ahead of the row and behind it stays.
TEST(ByteTableKernels, GiveEachByteItsEntry) {
  constexpr std::size_t kGuard = 70;
  std::mt19937 random(4);
  const kernels::ByteTableKernels* before = nullptr;
  for (const SimdLevel level : kernels::kSimdLevels) {
    if (level > kernels::ProcessorSimdLevel()) continue;
    SCOPED_TRACE(kernels::SimdLevelName(level));
    const kernels::ByteTableKernels& k = kernels::Choose<kernels::ByteTableKernels>(level);
    EXPECT_FALSE(before && before->mapBytes == k.mapBytes);
    EXPECT_FALSE(before && before->mapChannels == k.mapChannels);
    before = &k;
    for (int width = -1; width <= 200; ++width) {
      const auto bytes = static_cast<std::size_t>(width < 0 ? 0 : 3 * width);
      const ByteTable tables[] = {RandomTable(random), RandomTable(random), RandomTable(random)};
      const Row from = RandomRow(bytes + 2 * kGuard, random);
      Row same = RandomRow(from.size(), random);
      Row each = same;
      Row sameInPlace = from;
      Row eachInPlace = from;
      Row expected[] = {same, each, from, from};
      for (std::size_t i = kGuard; i < kGuard + bytes; ++i) {
        expected[0][i] = expected[2][i] = tables[0][from[i]];
        expected[1][i] = expected[3][i] = tables[(i - kGuard) % 3][from[i]];
      }
      k.mapBytes(&same[kGuard], &from[kGuard], bytes, tables[0]);
      k.mapBytes(&sameInPlace[kGuard], &sameInPlace[kGuard], bytes, tables[0]);
      const kernels::ChannelTables channels{tables[0], tables[1], tables[2]};
      k.mapChannels(&each[kGuard], &from[kGuard], width, channels);
      k.mapChannels(&eachInPlace[kGuard], &eachInPlace[kGuard], width, channels);
      ASSERT_EQ(same, expected[0]) << width;
      ASSERT_EQ(each, expected[1]) << width;
      ASSERT_EQ(sameInPlace, expected[2]) << width;
      ASSERT_EQ(eachInPlace, expected[3]) << width;
    }
  }
}

}  // namespace
