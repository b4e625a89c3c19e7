// Forces a crop into a ratio of its sides.
#pragma once

#include "base/Export.h"

namespace editing {

// The edges of a crop as shares of the picture's width and height, 0 to 1.
struct CropEdges {
  double left, right, bottom, top;
};

// Makes the crop as wide as `ratio` times its height, in pixels of a picture of the given size,
// around its centre. Its longer side as a share stays, or the shorter one grows; what would leave
// the picture is made smaller and moved inside. A ratio that is not above 0 changes nothing.
FXBOX_API void LockRatio(double ratio, double pictureWidth, double pictureHeight, CropEdges& edges);

// The same in 10000ths of all.
struct CropEdges10000 {
  int left, right, bottom, top;
};
FXBOX_API void LockRatio(int ratio, int pictureWidth, int pictureHeight, CropEdges10000& edges);

}  // namespace editing
