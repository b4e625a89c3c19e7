// A picture that several threads change in place, a block of neighbouring rows each.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "base/Workers.h"

namespace kernels {

// A kernel that looks at the rows around the one it changes would see what another thread has made
// of them. So copies of the rows at the borders between blocks are taken first, and a block finds
// the rows beyond its own as they were.
class RowBlocks {
 public:
  // Of each of the rows 0 to height - 1 the bytes from `offset` on are kept, `bytes` of them, for
  // `reach` rows on either side of a border. Blocks have at least `least` rows; without workers
  // there is one, and nothing is copied. Throws std::bad_alloc.
  RowBlocks(std::uint8_t* const* pictureRows, std::size_t offset, std::size_t bytes, int height,
            int reach, int least);

  // The rows of a block: First(number) to First(number + 1) - 1.
  int First(int number) const;
  // Row y, from `offset` on, as a block is to see it. A row outside the picture is the caller's: it
  // must be there. What is not the block's own row is a copy for this block alone, up to `reach`
  // rows away.
  const std::uint8_t* Row(int number, int y) const;
  std::uint8_t* Row(int number, int y);

  // Calls work(number) for each block; false stops, as in base::ForEachBand.
  template <class Work>
  bool ForEach(const Work& work) const {
    return base::ForEachBand(count, 1, [&](int first, int end) {
      while (first < end && work(first)) ++first;
      return first == end;
    });
  }

 private:
  // Where the copy of row y is.
  std::size_t KeptAt(int border, int y) const;

  std::uint8_t* const* const rows;
  const std::size_t at, length;
  const int height, reach, count;
  std::vector<std::uint8_t> kept;  // border by border, from 1 on
};

}  // namespace kernels
