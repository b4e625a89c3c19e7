// A mat painted on plain rows: solid, or as a glaze over the picture.
//
// Rows and widths as in PointKernels.h.
#pragma once

#include <cstdint>

#include "filters/pixels/ByteTableKernels.h"
#include "filters/pixels/ColourConversion.h"

namespace kernels {

// What a glaze makes of a channel: `percent` of the picture and the rest of the colour. Where a
// percentage outside 0..100 leads beyond a byte, its low eight bits are kept.
ChannelTables BuildGlazeTables(Colour colour, int percent);

// What a pane of coloured glass makes of a channel: `percent` of the picture and the rest of the
// colour, on the scale of a byte and each truncated by itself.
ChannelTables BuildTintTables(Colour colour, int percent);

void FillColour(std::uint8_t* row, int width, Colour colour);

}  // namespace kernels
