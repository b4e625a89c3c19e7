#include "host/Sizes.h"

#include <algorithm>
#include <cstdint>

namespace host {
namespace {

// Parts of one axis below 0 and beyond the picture go.
void CutAxis(int& from, int& length, int size) {
  const std::int64_t end = std::min<std::int64_t>(std::int64_t{from} + length, size);
  from = std::max(from, 0);
  length = static_cast<int>(std::max<std::int64_t>(end - from, 0));
}

}  // namespace

Rectangle CutTo(const Rectangle& rectangle, Size picture) {
  Rectangle cut = rectangle;
  CutAxis(cut.x, cut.width, picture.width);
  CutAxis(cut.y, cut.height, picture.height);
  if (cut.width == 0 || cut.height == 0) cut = {};
  return cut;
}

}  // namespace host
