#include "filters/detail/DustKernels.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "base/Rows.h"
#include "filters/pixels/RowBlocks.h"

namespace kernels {
namespace {

void AddChannels(const std::uint8_t* colour, int width, std::uint16_t* sums) {
  for (int x = 0; x < width; ++x) {
    sums[x] = static_cast<std::uint16_t>(colour[3 * x] + colour[3 * x + 1] + colour[3 * x + 2]);
  }
}

bool IsDust(const std::uint16_t* const* sums, int x, const DustLimits& limits) {
  int count = 0;
  for (int row = 0; row < kDustRows; ++row) {
    for (int at = x - kDustReach; at <= x + kDustReach; ++at) {
      if (std::abs(sums[row][at] - sums[kDustReach][x]) < limits.tolerance) ++count;
      if (count > limits.greatestRegion) return false;
    }
  }
  return true;
}

void FindDust(const std::uint16_t* const* sums, int width, const DustLimits& limits,
              std::uint8_t* isDust) {
  for (int x = 0; x < width; ++x) isDust[x] = IsDust(sums, x, limits) ? 255 : 0;
}

// A walk up a block of rows. What it remembers of rows as they were: the sums of eleven, and the
// colours of those of three that it has changed.
class DustWalk {
 public:
  DustWalk(const base::WritableRows& walked, const RowBlocks& rowBlocks, int block,
           const DustKernelTable& table, const DustLimits& dust)
      : picture(walked),
        blocks(rowBlocks),
        number(block),
        kernels(table),
        limits(dust),
        outside(static_cast<std::size_t>(walked.width) + kDustReach + kDustPadding, kNoSum),
        marks(static_cast<std::size_t>(walked.width)) {
    for (Sums& row : sums) row = outside;
    const int first = blocks.First(number);
    for (int y = first - kDustReach; y < first + kDustReach; ++y) AddSums(y);
  }

  // False when an abort ended it.
  bool Run(const std::atomic<bool>& abort) {
    for (int y = blocks.First(number); y < blocks.First(number + 1); ++y) {
      if (abort) return false;
      CleanRow(y);
    }
    return true;
  }

 private:
  using Sums = std::vector<std::uint16_t>;

  template <int kRows>
  static std::size_t Slot(int y) {
    return static_cast<std::size_t>(y) % kRows;
  }

  // Rows must be cleaned one after the other.
  void CleanRow(int y) {
    AddSums(y + kDustReach);
    changed[Slot<3>(y)] = false;
    if (y == 0 || y == picture.height - 1) return;
    std::array<const std::uint16_t*, kDustRows> window;
    for (int i = 0; i < kDustRows; ++i) {
      const int row = y + i - kDustReach;
      const bool exists = row >= 0 && row < picture.height;
      window[Slot<kDustRows>(i)] =
          (exists ? sums[Slot<kDustRows>(row)] : outside).data() + kDustReach;
    }
    kernels.findDust(window.data(), picture.width, limits, marks.data());
    ReplaceMarked(y);
  }

  const std::uint8_t* Row(int y) const { return blocks.Row(number, y); }

  void AddSums(int y) {
    if (y < 0 || y >= picture.height) return;
    kernels.addChannels(Row(y), picture.width, sums[Slot<kDustRows>(y)].data() + kDustReach);
  }

  // The outermost columns stay.
  void ReplaceMarked(int y) {
    int x = NextMark(0);
    if (x == 0) return;
    changed[Slot<3>(y)] = true;
    originals[Slot<3>(y)].assign(Row(y), Row(y) + base::ColourBytes(picture.width));
    std::uint8_t* const row = picture.colour[y];
    const std::uint8_t* const rows[] = {Original(y - 1), Original(y), Row(y + 1)};
    for (; x != 0; x = NextMark(x)) {
      const std::ptrdiff_t pixel = base::ColourOffset(x);
      for (std::ptrdiff_t at = pixel; at < pixel + base::kBytesPerPixel; ++at) {
        int sum = 0;
        for (const std::uint8_t* old : rows) sum += old[at - 3] + old[at] + old[at + 3];
        row[at] = static_cast<std::uint8_t>(sum / 9);
      }
    }
  }

  // The column of the next mark behind column x, the last one aside; 0 when there is none.
  int NextMark(int x) const {
    const std::uint8_t* const next = marks.data() + x + 1;
    const auto* const mark = static_cast<const std::uint8_t*>(
        std::memchr(next, 255, static_cast<std::size_t>(picture.width - 2 - x)));
    return mark ? static_cast<int>(mark - marks.data()) : 0;
  }

  const std::uint8_t* Original(int y) const {
    return changed[Slot<3>(y)] ? originals[Slot<3>(y)].data() : Row(y);
  }

  const base::WritableRows& picture;
  const RowBlocks& blocks;
  const int number;
  const DustKernelTable& kernels;
  const DustLimits& limits;
  const Sums outside;
  std::array<Sums, kDustRows> sums;
  std::array<std::vector<std::uint8_t>, 3> originals;
  std::array<bool, 3> changed = {};
  std::vector<std::uint8_t> marks;
};

}  // namespace

const DustKernelTable& DustKernelTable::Plain() {
  static constexpr DustKernelTable kPlain = {AddChannels, FindDust};
  return kPlain;
}

bool RemoveDust(const base::WritableRows& picture, int tolerance, int greatestRegion,
                const std::atomic<bool>& abort) {
  if (picture.width < 3 || picture.height < 3) return true;
  // No sums are further apart than 765, and no window has more than 121 pixels.
  const DustLimits limits = {std::clamp(tolerance, 0, 766),
                             std::clamp(greatestRegion, -1, kDustRows * kDustRows)};
  // So that what is counted twice at the borders stays a small part.
  const int least = std::max(8 * kDustRows, base::RowsPerBand(picture.width));
  const RowBlocks blocks(picture.colour, 0, base::ColourBytes(picture.width), picture.height,
                         kDustReach, least);
  return blocks.ForEach([&](int block) {
    return DustWalk(picture, blocks, block, Choose<DustKernelTable>(), limits).Run(abort);
  });
}

}  // namespace kernels
