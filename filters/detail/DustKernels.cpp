#include "filters/detail/DustKernels.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <vector>

#include "base/Rows.h"
#include "filters/detail/DustLoops.h"

namespace kernels {
namespace {

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

// What the walk upwards remembers of rows as they were: the sums of eleven, and the colours of
// those of three that it has changed.
class DustWalk {
 public:
  DustWalk(const PictureRows& walked, const DustKernelTable& table, const DustLimits& dust)
      : picture(walked),
        kernels(table),
        limits(dust),
        outside(static_cast<std::size_t>(walked.width) + kDustReach + kDustPadding, kNoSum),
        marks(static_cast<std::size_t>(walked.width)) {
    for (Sums& row : sums) row = outside;
    for (int y = 0; y < kDustReach; ++y) AddSums(y);
  }

  // Rows must be cleaned one after the other, from row 0.
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

 private:
  using Sums = std::vector<std::uint16_t>;

  template <int kRows>
  static std::size_t Slot(int y) {
    return static_cast<std::size_t>(y) % kRows;
  }

  std::uint8_t* Row(int y) const {
    return picture.colourRows[picture.y + y] + base::ColourOffset(picture.x);
  }

  void AddSums(int y) {
    if (y >= picture.height) return;
    kernels.addChannels(Row(y), picture.width, sums[Slot<kDustRows>(y)].data() + kDustReach);
  }

  // The outermost columns stay.
  void ReplaceMarked(int y) {
    const auto end = marks.end() - 1;
    auto mark = std::find(marks.begin() + 1, end, 255);
    if (mark == end) return;
    changed[Slot<3>(y)] = true;
    originals[Slot<3>(y)].assign(Row(y), Row(y) + base::ColourBytes(picture.width));
    const std::uint8_t* const rows[] = {Original(y - 1), Original(y), Row(y + 1)};
    for (; mark != end; mark = std::find(mark + 1, end, 255)) {
      const std::ptrdiff_t pixel = base::ColourOffset(static_cast<int>(mark - marks.begin()));
      for (std::ptrdiff_t at = pixel; at < pixel + base::kBytesPerPixel; ++at) {
        int sum = 0;
        for (const std::uint8_t* row : rows) sum += row[at - 3] + row[at] + row[at + 3];
        Row(y)[at] = static_cast<std::uint8_t>(sum / 9);
      }
    }
  }

  const std::uint8_t* Original(int y) const {
    return changed[Slot<3>(y)] ? originals[Slot<3>(y)].data() : Row(y);
  }

  const PictureRows& picture;
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
  static constexpr DustKernelTable kPlain = {AddChannelsLoop, FindDust};
  return kPlain;
}

bool RemoveDust(const PictureRows& picture, int tolerance, int greatestRegion,
                const std::atomic<bool>& abort) {
  if (picture.width < 3 || picture.height < 3) return true;
  // No sums are further apart than 765, and no window has more than 121 pixels.
  const DustLimits limits = {std::clamp(tolerance, 0, 766),
                             std::clamp(greatestRegion, -1, kDustRows * kDustRows)};
  DustWalk walk(picture, Choose<DustKernelTable>(), limits);
  for (int y = 0; y < picture.height; ++y) {
    if (abort) return false;
    walk.CleanRow(y);
  }
  return true;
}

}  // namespace kernels
