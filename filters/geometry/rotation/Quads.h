// Pixels of colour and mask in one 32-bit number, as the rotation moves them.
#pragma once

#include <cstdint>

namespace kernels {

// Blue in the low byte, then green, red, mask.
using Quad = std::uint32_t;

inline constexpr int kMaskShift = 24;
// No picture there: mask 255, and no colour.
inline constexpr Quad kNothing = 0xFFu << kMaskShift;

}  // namespace kernels
