// PictureSample: the pixels on a grid over a picture, gathered while its rows pass by.
#pragma once

#include <unknwn.h>

#include <cstdint>
#include <mutex>
#include <vector>

#include "base/Export.h"

// Any thread may call any operation. Pulls may bring the picture in any parts and orders; each
// pixel of the grid is the one that came last.
class FXBOX_API PictureSample {
 public:
  static constexpr int kGrid =
      128;  // points in each direction, fewer where there are no more pixels

  // The rows that follow are those of a picture of this size. One of another size is forgotten.
  void Begin(int width, int height);
  // Takes what lies on the grid of `length` pixels from (x, y) on. Either row may be null: without
  // colours nothing is taken, without a mask all is there.
  void TakeRow(const BYTE* colour, const BYTE* mask, int x, int y, int length);
  // See IAnimPictureSample::ReadSample.
  int Read(BYTE* pixels, int most) const;

 private:
  struct Axis {
    int size = 0;
    int points = 0;

    void Set(int newSize);
    // Where the point lies, and the first point at or behind a place.
    int At(int point) const;
    int From(int place) const;
  };

  mutable std::mutex lock;
  Axis across, down;
  std::vector<std::uint32_t> points;  // row by row; 0, or the colour with the highest byte set
};
