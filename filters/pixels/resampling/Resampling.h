// Scales whole pictures: reduction by weighted windows, enlargement by a bicubic filter.
#pragma once

#include <atomic>
#include <cstdint>

#include "base/RowView.h"

namespace kernels {

// How a picture is scaled. The ratios are those before the output's size was rounded, and choose
// the way: enlargement for both axes where one of them is above 1.
struct Resampling {
  double ratioX = 1, ratioY = 1;
  int offsetX = 0, offsetY = 0;  // of the picture's origin, in source pixels
};

// Fills `to`, which has a pixel at least, from `from`, whose mask is searched once: an opaque
// picture takes a shorter way. False when `abort` was seen, which is looked at before each row, or
// when the source is too narrow to be enlarged. `to` then holds anything, but an enlargement is
// finished from its last row on, and those ahead are untouched. Throws std::bad_alloc.
bool Resample(const base::RowView& from, const base::WritableRows& to, const Resampling& how,
              const std::atomic<bool>& abort);

// Whether a picture of this width is enlarged at these ratios.
bool CanEnlarge(int width, double ratioX, double ratioY);

// The padding at a row's ends has no room in a narrower picture.
inline constexpr int kLeastEnlargedWidth = 3;

// The two ways, for Resample.
bool Reduce(const base::RowView& from, const base::WritableRows& to, const Resampling& how,
            bool opaque, const std::atomic<bool>& abort);
bool Enlarge(const base::RowView& from, const base::WritableRows& to, bool opaque,
             const std::atomic<bool>& abort);

}  // namespace kernels
