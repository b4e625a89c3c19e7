// One byte for each pixel of a block.
#pragma once

#include <cstdint>

namespace kernels {

// `Wide` is what the kernels of a vector unit bring; it knows how many pixels a block has.
template <class Wide>
struct alignas(64) Plane {
  std::uint8_t bytes[Wide::kPixels];
};

}  // namespace kernels
