// What kernels that are exact in double share: the planes of a block, and the form for one pixel.
#pragma once

#include <cstdint>

namespace kernels {

// One byte for each pixel of a block. `Wide` is what the kernels of a vector unit bring; it knows
// how many pixels a block has.
template <class Wide>
struct alignas(64) Plane {
  std::uint8_t bytes[Wide::kPixels];
};

// One number where a vector unit has several. A limit takes the place of what is no number, as
// there.
struct OneDouble {
  using Doubles = double;
  static double Set(double value) { return value; }
  static double Max(double value, double limit) { return value > limit ? value : limit; }
  static double Min(double value, double limit) { return value < limit ? value : limit; }
};

}  // namespace kernels
