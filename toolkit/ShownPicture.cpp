#include "toolkit/ShownPicture.h"

#include <algorithm>

namespace toolkit {
namespace {

// Side of the squares that stand for nothing, in pixels of the canvas.
constexpr int kSquare = 8;
constexpr int kLightSquare = 204;
constexpr int kDarkSquare = 153;

// What is seen of a byte of the picture through its mask, over the square at this place.
std::uint32_t Over(std::uint32_t byte, std::uint32_t mask, std::uint32_t ground) {
  return (byte * (255 - mask) + ground * mask + 127) / 255;
}

std::uint32_t Square(int x, int y) {
  return ((x / kSquare + y / kSquare) & 1) ? kDarkSquare : kLightSquare;
}

// Where a column or row of the shown picture lies in the picture: the middle of what it covers.
int Source(int shown, int shownCount, int count) {
  return static_cast<int>((2LL * shown + 1) * count / (2LL * shownCount));
}

std::uint32_t PixelOver(const std::uint8_t* colour, std::uint32_t mask, std::uint32_t ground) {
  return Over(colour[2], mask, ground) << 16 | Over(colour[1], mask, ground) << 8 |
         Over(colour[0], mask, ground);
}

// The sums of the pixels that one shown pixel covers, divided by their number.
std::uint32_t Mean(const PictureRows& picture, int left, int right, int bottom, int top,
                   std::uint32_t ground) {
  std::uint64_t sums[3] = {};
  for (int y = bottom; y < top; ++y) {
    const std::uint8_t* colour = picture.colourRows[y] + 3 * static_cast<std::ptrdiff_t>(left);
    const std::uint8_t* const mask = picture.maskRows ? picture.maskRows[y] : nullptr;
    for (int x = left; x < right; ++x, colour += 3) {
      for (int k = 0; k < 3; ++k) sums[k] += Over(colour[k], mask ? mask[x] : 0, ground);
    }
  }
  const auto count = static_cast<std::uint64_t>(right - left) * static_cast<unsigned>(top - bottom);
  const auto mean = [&](int k) { return static_cast<std::uint32_t>(sums[k] / count); };
  return mean(2) << 16 | mean(1) << 8 | mean(0);
}

// First and last pixel but one that the shown pixel covers; one at least.
struct Run {
  int from, end;
};
Run Covered(int shown, int shownCount, int count) {
  const int from = static_cast<int>(static_cast<long long>(shown) * count / shownCount);
  const int end = static_cast<int>((shown + 1LL) * count / shownCount);
  return {from, std::max(end, from + 1)};
}

// Row `y` from the top of a picture that is shown smaller.
void ReduceRow(const PictureRows& picture, Size shown, int y, Run seen, std::uint32_t* to) {
  const Run rows = Covered(shown.height - 1 - y, shown.height, picture.height);
  for (int x = seen.from; x < seen.end; ++x) {
    const Run columns = Covered(x, shown.width, picture.width);
    *to++ = Mean(picture, columns.from, columns.end, rows.from, rows.end, Square(x, y));
  }
}

// The same of a picture that is shown larger: each pixel is a block.
void EnlargeRow(const PictureRows& picture, Size shown, int y, Run seen, std::uint32_t* to) {
  const int row = Source(shown.height - 1 - y, shown.height, picture.height);
  const std::uint8_t* const mask = picture.maskRows ? picture.maskRows[row] : nullptr;
  for (int x = seen.from; x < seen.end; ++x) {
    const int column = Source(x, shown.width, picture.width);
    *to++ = PixelOver(picture.colourRows[row] + 3 * static_cast<std::ptrdiff_t>(column),
                      mask ? mask[column] : 0, Square(x, y));
  }
}

}  // namespace

Rect SeenPart(const Rect& place, Size area) {
  const int width = std::max(place.width, 0), height = std::max(place.height, 0);
  const int left = std::clamp(-place.x, 0, width), top = std::clamp(-place.y, 0, height);
  return {left, top, std::clamp(area.width - place.x, left, width) - left,
          std::clamp(area.height - place.y, top, height) - top};
}

void RenderShown(const PictureRows& picture, Size shown, const Rect& seen, void* pixels,
                 std::ptrdiff_t stride) {
  if (picture.width < 1 || picture.height < 1) return;
  const bool isReduced = shown.width < picture.width || shown.height < picture.height;
  const Run columns = {seen.x, seen.Right()};
  for (int y = 0; y < seen.height; ++y) {
    void* const row = static_cast<unsigned char*>(pixels) + y * stride;
    (isReduced ? ReduceRow : EnlargeRow)(picture, shown, seen.y + y, columns,
                                         static_cast<std::uint32_t*>(row));
  }
}

}  // namespace toolkit
