// Rows for the comparison of fast kernels with plain ones.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

#include "filters/pixels/simd/Simd.h"

namespace testing_support {

using Row = std::vector<std::uint8_t>;

// Bytes of all levels, with more of the darkest and the lightest.
inline Row RandomRow(std::size_t bytes, unsigned seed) {
  std::mt19937 random(seed);
  Row row(bytes);
  for (std::uint8_t& byte : row) {
    const auto value = random();
    byte = static_cast<std::uint8_t>(value % 8 == 0 ? (value >> 8 & 1) * 255 : value >> 16);
  }
  return row;
}

// Runs the same on the same row with the kernels of the reference and of every level that this
// processor has; every byte must agree.
template <class Table, class Run>
void ExpectLevelsEqual(const Table& reference, const Row& row, Run run) {
  Row expected = row;
  run(reference, expected.data());
  for (const kernels::SimdLevel level : kernels::kSimdLevels) {
    const Table& own = kernels::Choose<Table>(level);
    if (level > kernels::ProcessorSimdLevel() || &own == &reference) continue;
    Row found = row;
    run(own, found.data());
    if (expected == found) continue;
    std::size_t at = 0;
    while (expected[at] == found[at]) ++at;
    ADD_FAILURE() << kernels::SimdLevelName(level) << ", byte " << at << ": " << int{found[at]}
                  << ", expected " << int{expected[at]};
  }
}

template <class Table, class Run>
void ExpectLevelsEqual(const Row& row, Run run) {
  ExpectLevelsEqual(Table::Plain(), row, run);
}

// From the start of one of the rows that a kernel is given to that of the next.
constexpr std::ptrdiff_t kNextRow = 800;

// The same with rows of every width around the size of a vector, at every alignment. What lies
// around them is a guard. `run` gets the kernels, the start of the first of six rows, and the width
// in pixels.
template <class Table, class Run>
void ExpectLevelsEqualAtEveryWidth(const Table& reference, Run run) {
  for (int width = -1; width <= 200; ++width) {
    SCOPED_TRACE(width);
    const auto start = 96 + (width & 63);
    const Row row = RandomRow(200 + 6 * kNextRow, static_cast<unsigned>(width));
    ExpectLevelsEqual(reference, row,
                      [&](auto& kernels, std::uint8_t* at) { run(kernels, at + start, width); });
  }
}
template <class Table, class Run>
void ExpectLevelsEqualAtEveryWidth(Run run) {
  ExpectLevelsEqualAtEveryWidth(Table::Plain(), run);
}

}  // namespace testing_support
