// A part of a picture as a view of its own.
#pragma once

#include <vector>

#include "base/RowView.h"
#include "base/Rows.h"

// Holds the row pointers of the part; the rows stay where they are.
class CroppedRows {
 public:
  // Pixel (x, y) of `rows` becomes the first one. The part must lie in the picture. Good until the
  // next call.
  base::RowView Crop(const base::RowView& rows, int x, int y, int width, int height) {
    colour.clear();
    mask.clear();
    for (int row = y; row < y + height; ++row) {
      colour.push_back(rows.colour[row] + base::ColourOffset(x));
      mask.push_back(rows.mask[row] + x);
    }
    return {colour.data(), mask.data(), width, height};
  }

 private:
  std::vector<const BYTE*> colour, mask;
};
