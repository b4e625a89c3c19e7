// Sizes and parts of pictures, in pixels.
#pragma once

#include "base/Export.h"

namespace host {

// Pictures of the pipeline have sides of at least 1.
struct Size {
  int width = 0;
  int height = 0;
  bool operator==(const Size&) const = default;
};

// Part of a picture; y counts upwards from the bottom row, as everywhere in the pipeline.
struct Rectangle {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  bool operator==(const Rectangle&) const = default;
};

// The part of the rectangle that lies within a picture of this size; its sides are 0 where there is
// none.
FXBOX_API Rectangle CutTo(const Rectangle& rectangle, Size picture);

}  // namespace host
