// One picture laid over another, on plain rows.
//
// Rows and widths as in PointKernels.h. No two rows overlap.
#pragma once

#include <cstdint>

namespace kernels {

// Lays a row of colour and mask over another. Without a row of colour the mask alone changes.
void ComposeRow(std::uint8_t* colour, std::uint8_t* mask, const std::uint8_t* overColour,
                const std::uint8_t* overMask, int width);

}  // namespace kernels
