#include "base/RowWriter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <vector>

namespace {

constexpr std::size_t kGuard = 130;
constexpr std::size_t kLongest = 400;
constexpr BYTE kUntouched = 0xA5;

// Of pictures that caches hold, and of one that none does: rows of every length at every place in a
// cache line.
TEST(RowWriter, WritesTheRowAndNothingElse) {
  std::vector<BYTE> from(kLongest + 64);
  std::iota(from.begin(), from.end(), BYTE{1});
  std::vector<BYTE> expected(kLongest + 2 * kGuard), row(expected.size());
  for (const std::int64_t pictureBytes : {std::int64_t{0}, std::int64_t{1} << 40}) {
    for (std::size_t start = 0; start < 64; ++start) {
      for (std::size_t bytes = 0; bytes <= kLongest - 64; bytes += bytes < 200 ? 1 : 37) {
        SCOPED_TRACE(testing::PrintToString(std::pair(start, bytes)));
        std::fill(expected.begin(), expected.end(), kUntouched);
        std::fill(row.begin(), row.end(), kUntouched);
        std::copy_n(from.begin() + 3, bytes, expected.begin() + kGuard + start);
        base::RowWriter(pictureBytes).Copy(row.data() + kGuard + start, from.data() + 3, bytes);
        ASSERT_EQ(row, expected);
        std::fill_n(expected.begin() + kGuard + start, bytes, BYTE{255});
        base::RowWriter(pictureBytes).Fill(row.data() + kGuard + start, 255, bytes);
        ASSERT_EQ(row, expected);
      }
    }
  }
}

}  // namespace
