#include "filters/frames/PaneLayout.h"

#include <algorithm>
#include <cstdint>

namespace kernels {

PaneSpan LayOutPane(int length, int percent, int position) {
  __extension__ using Wide = __int128;  // three numbers of the text's size are multiplied
  const Wide wide = std::int64_t{percent} * length / 100;
  const Wide first = (length - wide) / 2 * (std::int64_t{position} + 100) / 100;
  const auto limited = [length](Wide place) {
    return static_cast<int>(std::clamp<Wide>(place, 0, length - 1));
  };
  return {limited(first), limited(first + wide)};
}

}  // namespace kernels
