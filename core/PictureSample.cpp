#include "core/PictureSample.h"

#include <algorithm>

#include "base/Rows.h"

namespace {

constexpr std::uint32_t kTaken = 0xFF000000u;
constexpr BYTE kNothing = 255;  // of a mask

}  // namespace

void PictureSample::Axis::Set(int newSize) {
  size = std::max(newSize, 0);
  points = std::min(size, kGrid);
}

int PictureSample::Axis::At(int point) const {
  return static_cast<int>((2 * std::int64_t{point} + 1) * size / (2 * std::int64_t{points}));
}

int PictureSample::Axis::From(int place) const {
  if (place <= 0 || size == 0) return 0;
  // Never one too far.
  int point = static_cast<int>(std::min<std::int64_t>(std::int64_t{place} * points / size, points));
  while (point < points && At(point) < place) ++point;
  return point;
}

void PictureSample::Begin(int width, int height) {
  const std::lock_guard held(lock);
  if (across.size == width && down.size == height) return;
  across.Set(width);
  down.Set(height);
  const auto count =
      static_cast<std::size_t>(across.points) * static_cast<std::size_t>(down.points);
  points.assign(count, 0);
}

void PictureSample::TakeRow(const BYTE* colour, const BYTE* mask, int x, int y, int length) {
  const std::lock_guard held(lock);
  const int row = down.From(y);
  if (!colour || y < 0 || row >= down.points || down.At(row) != y) return;
  const std::int64_t end = std::int64_t{x} + length;
  for (int i = across.From(x); i < across.points && across.At(i) < end; ++i) {
    const int at = across.At(i) - x;
    const BYTE* const pixel = colour + base::ColourOffset(at);
    std::uint32_t& point = points[static_cast<std::size_t>(row * across.points + i)];
    const bool isThere = !mask || mask[at] != kNothing;
    const auto colours = static_cast<std::uint32_t>(pixel[0] | pixel[1] << 8 | pixel[2] << 16);
    point = isThere ? kTaken | colours : 0;
  }
}

int PictureSample::Read(BYTE* pixels, int most) const {
  const std::lock_guard held(lock);
  int count = 0;
  for (const std::uint32_t point : points) {
    if (count >= most) break;
    if (point == 0) continue;
    for (int i = 0; i < 3; ++i) *pixels++ = static_cast<BYTE>(point >> 8 * i);
    ++count;
  }
  return count;
}
