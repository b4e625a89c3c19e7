// A picture, or a part of one, that lies in somebody's row arrays.
#pragma once

#include <wtypes.h>

namespace kernels {

// Column 0 of row 0 is pixel x of row y of the arrays. Without mask rows everything is opaque.
struct PictureRows {
  BYTE** colourRows;
  BYTE** maskRows;
  int x, y, width, height;
};

}  // namespace kernels
