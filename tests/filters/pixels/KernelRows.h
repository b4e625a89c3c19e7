// Rows for the comparison of fast kernels with plain ones.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

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

// Runs the same on the same row with the kernels of two tables; every byte of both must agree.
template <class Table, class Run>
void ExpectSameRow(const Table& plain, const Table& fast, const Row& row, Run run) {
  Row expected = row;
  Row found = row;
  run(plain, expected.data());
  run(fast, found.data());
  if (expected == found) return;
  std::size_t at = 0;
  while (expected[at] == found[at]) ++at;
  ADD_FAILURE() << "byte " << at << ": " << int{found[at]} << ", expected " << int{expected[at]};
}

}  // namespace testing_support
