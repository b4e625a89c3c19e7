// A picture, or a part of one, that lies in somebody's row arrays.
#pragma once

#include <wtypes.h>

#include "base/RowView.h"

namespace kernels {

// Column 0 of row 0 is pixel x of row y of the arrays. Without mask rows everything is opaque.
struct PictureRows {
  BYTE** colourRows;
  BYTE** maskRows;
  int x, y, width, height;
};

// The same to be read alone.
struct GivenRows {
  const BYTE* const* colourRows;
  const BYTE* const* maskRows;
  int x, y, width, height;

  GivenRows(const PictureRows& p)  // NOLINT(google-explicit-constructor)
      : colourRows(p.colourRows),
        maskRows(p.maskRows),
        x(p.x),
        y(p.y),
        width(p.width),
        height(p.height) {}
  explicit GivenRows(const base::RowView& view)
      : colourRows(view.colour),
        maskRows(view.mask),
        x(0),
        y(0),
        width(view.width),
        height(view.height) {}
};

}  // namespace kernels
