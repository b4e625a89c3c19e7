// A row of both planes that is changed on its way to rows that may be one plane alone.
#pragma once

#include <wtypes.h>

#include <algorithm>

#include "base/Rows.h"
#include "filters/pixels/PointKernels.h"

// Calls change(to, from, width) for pieces of a row, with a place for the plane that nobody wants.
template <class Change>
void CopyChanged(const kernels::MaskedRow& to, const kernels::GivenMaskedRow& from, int width,
                 const Change& change) {
  constexpr int kPiece = 1024;
  if (to.colour && to.mask) return change(to, from, width);
  BYTE colours[base::kBytesPerPixel * kPiece];
  BYTE masks[kPiece];
  for (int x = 0; x < width; x += kPiece) {
    const std::ptrdiff_t at = base::ColourOffset(x);
    change({to.colour ? to.colour + at : colours, to.mask ? to.mask + x : masks},
           {from.colour + at, from.mask + x}, std::min(kPiece, width - x));
  }
}
