// A row of both planes, to be written or to be read.
#pragma once

#include <cstdint>

namespace kernels {

// Where a function has both, they are the same row or do not overlap.
struct MaskedRow {
  std::uint8_t* colour;
  std::uint8_t* mask;
};
struct GivenMaskedRow {
  const std::uint8_t* colour;
  const std::uint8_t* mask;
};

}  // namespace kernels
