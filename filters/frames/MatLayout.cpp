#include "filters/frames/MatLayout.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "base/Arithmetic.h"

namespace kernels {
namespace {

// `corner` is where the input begins, `first` and `last` are what the mat leaves free; all may lie
// outside the result.
MatAxis LayOut(std::int64_t size, std::int64_t input, std::int64_t corner, std::int64_t first,
               std::int64_t last) {
  const std::int64_t hidden = std::max<std::int64_t>(0, -corner);
  const std::int64_t cut = std::min<std::int64_t>(0, size - input - corner);
  MatAxis axis;
  axis.size = base::LimitToInt32(size);
  // A part without a length may lie anywhere: the ends keep it addressable.
  axis.length = base::LimitToInt32(std::max<std::int64_t>(0, input - hidden + cut));
  axis.source = base::LimitToInt32(std::min(hidden, input));
  axis.place = base::LimitToInt32(std::min(hidden + corner, size));
  axis.first = base::LimitToInt32(std::clamp<std::int64_t>(first, 0, size));
  axis.last = base::LimitToInt32(std::max<std::int64_t>(0, std::min(last, size - 1)));
  return axis;
}

}  // namespace

MatAxis LayOutBorder(int input, int extent, int border, int shift) {
  const std::int64_t outside = std::max(border, 0);
  const std::int64_t size = std::max({0, input, extent}) + 2 * outside;
  const std::int64_t covered = std::abs(std::int64_t{border});
  return LayOut(size, std::max(input, 0), outside + shift, covered + shift,
                shift - covered + size - 1);
}

MatAxis LayOutTotal(int input, int extent, int total, int shift) {
  const std::int64_t shown = std::max(input, extent);
  const std::int64_t size = std::max({0, input, total});
  const std::int64_t first = (size - shown) / 2 + shift;
  const std::int64_t corner = size > input ? std::max<std::int64_t>(0, (size - shown) / 2) : 0;
  return LayOut(size, std::max(input, 0), corner + shift, first, first + input - 1);
}

}  // namespace kernels
