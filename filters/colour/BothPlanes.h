// A piece of a row for functions that write both planes.
#pragma once

#include <wtypes.h>

#include "base/RowPieces.h"
#include "filters/pixels/simd/MaskedRow.h"

// Calls change(to, from), with a place for a plane that nobody wants.
template <class Change>
void ChangeBothPlanes(const base::RowWay& piece, const Change& change) {
  BYTE colours[base::kBytesPerPixel * base::kPiecePixels];
  BYTE masks[base::kPiecePixels];
  change(kernels::MaskedRow{piece.toColour ? piece.toColour : colours,
                            piece.toMask ? piece.toMask : masks},
         kernels::GivenMaskedRow{piece.colour, piece.mask});
}
