#include "tests/support/GuardedRows.h"

#include <algorithm>
#include <numeric>

namespace testing_support {
namespace {
constexpr std::size_t kGuardBytes = 40;
}

GuardedRows::GuardedRows(int rowWidth, int rowCount, std::uint32_t seed)
    : width(rowWidth), height(rowCount) {
  std::mt19937 random(seed);
  colour.Lay(3 * width, height, random);
  mask.Lay(width, height, random);
}

void GuardedRows::Plane::Lay(int rowBytes, int rowCount, std::mt19937& random) {
  bytes = rowBytes;
  starts.resize(static_cast<std::size_t>(rowCount));
  std::vector<std::size_t> order(starts.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::shuffle(order.begin(), order.end(), random);
  std::size_t at = kGuardBytes;
  for (const std::size_t row : order) {
    starts[row] = at;
    at += static_cast<std::size_t>(rowBytes) + kGuardBytes + random() % 24;
  }
  pattern.resize(at + kGuardBytes);
  for (BYTE& byte : pattern) byte = static_cast<BYTE>(random());
  store = pattern;
  rows.assign(starts.size() + 2, nullptr);
  for (std::size_t i = 0; i < starts.size(); ++i) rows[i + 1] = store.data() + starts[i];
  pointers = rows;
}

void GuardedRows::Reset() {
  for (Plane* plane : {&colour, &mask}) {
    // In place: the row pointers stay good.
    std::copy(plane->pattern.begin(), plane->pattern.end(), plane->store.begin());
    plane->rows = plane->pointers;
  }
}

Picture GuardedRows::Part(int x, int y, int partWidth, int partHeight) const {
  Picture part(partWidth, partHeight);
  for (int i = 0; i < partHeight; ++i) {
    const auto row = static_cast<std::size_t>(y + i);
    if (partWidth < 1) continue;
    std::copy_n(colour.store.data() + colour.starts[row] + 3 * x, 3 * partWidth, part.Colour(0, i));
    std::copy_n(mask.store.data() + mask.starts[row] + x, partWidth, &part.Mask(0, i));
  }
  return part;
}

std::string GuardedRows::WrittenOutside(int x, int y, int partWidth, int partHeight) const {
  const std::string inColour = colour.WrittenOutside(3 * x, 3 * (x + partWidth), y, y + partHeight);
  if (!inColour.empty()) return "colour " + inColour;
  const std::string inMask = mask.WrittenOutside(x, x + partWidth, y, y + partHeight);
  return inMask.empty() ? inMask : "mask " + inMask;
}

std::string GuardedRows::Plane::WrittenOutside(int firstByte, int endByte, int firstRow,
                                               int endRow) const {
  if (rows != pointers) return "row pointers changed";
  std::vector<BYTE> allowed = pattern;
  for (int row = std::max(0, firstRow); row < std::min(endRow, static_cast<int>(starts.size()));
       ++row) {
    const int first = std::max(0, firstByte);
    const int end = std::min(bytes, endByte);
    if (first >= end) continue;
    const auto start = static_cast<std::ptrdiff_t>(starts[static_cast<std::size_t>(row)]);
    std::copy(store.begin() + start + first, store.begin() + start + end,
              allowed.begin() + start + first);
  }
  const auto at = std::mismatch(allowed.begin(), allowed.end(), store.begin()).first;
  if (at == allowed.end()) return {};
  const auto place = static_cast<std::size_t>(at - allowed.begin());
  std::string text = "written at byte " + std::to_string(place) + ", rows start at";
  for (const std::size_t start : starts) text.append(" ").append(std::to_string(start));
  return text;
}

}  // namespace testing_support
