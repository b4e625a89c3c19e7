#include "filters/pixels/RowBlocks.h"

#include <algorithm>
#include <cstring>

namespace kernels {

RowBlocks::RowBlocks(std::uint8_t* const* pictureRows, std::size_t offset, std::size_t bytes,
                     int pictureHeight, int looksAround, int least)
    : rows(pictureRows),
      at(offset),
      length(bytes),
      height(pictureHeight),
      reach(looksAround),
      count(base::BandsOf(pictureHeight, std::max(least, looksAround))),
      kept(static_cast<std::size_t>(count - 1) * 2 * static_cast<std::size_t>(reach) * bytes) {
  std::uint8_t* to = kept.data();
  for (int border = 1; border < count; ++border) {
    for (int y = First(border) - reach; y < First(border) + reach; ++y, to += length) {
      if (y >= 0 && y < height) std::memcpy(to, rows[y] + at, length);
    }
  }
}

int RowBlocks::First(int number) const {
  return static_cast<int>(std::int64_t{height} * number / count);
}

std::size_t RowBlocks::KeptAt(int border, int y) const {
  return static_cast<std::size_t>((border - 1) * 2 * reach + y - First(border) + reach) * length;
}

std::uint8_t* RowBlocks::Row(int number, int y) {
  if (y >= 0 && y < First(number)) return kept.data() + KeptAt(number, y);
  if (y < height && y >= First(number + 1)) return kept.data() + KeptAt(number + 1, y);
  return rows[y] + at;
}

const std::uint8_t* RowBlocks::Row(int number, int y) const {
  return const_cast<RowBlocks*>(this)->Row(number, y);
}

}  // namespace kernels
