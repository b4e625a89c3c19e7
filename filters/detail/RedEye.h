// Red eyes, and green, blue and white ones: finds the reflection in a pupil that was clicked on,
// and fills it with a dark grey.
#pragma once

#include <wtypes.h>

#include <atomic>

#include "base/RowView.h"
#include "editing/RedEyeParameters.h"

namespace kernels {

// What a reflection is like, by the colour under the click.
enum class EyeKind {
  Red,    // red is the largest channel, or one of them
  Green,  // neither green nor blue is above 204
  Blue,   // the same, with more blue than green
  Cat,    // as bright as in an animal's eye
  White   // bright, and next to no colour
};

EyeKind EyeKindOf(const BYTE* pixel);

// Works in place. Only a window around the click is read and changed; its size grows with `zoom`,
// so that a preview shows what the full picture will be. The picture has a pixel at least; its mask
// rows are not used. An abort ends a search early, and the eye is then not as it should be. Takes
// memory for a map of the window, and may throw std::bad_alloc.
void RemoveRedEye(const base::WritableRows& picture, double zoom, const editing::RedEyeClick& click,
                  const std::atomic<bool>& abort);

}  // namespace kernels
