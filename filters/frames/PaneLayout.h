// Where a pane of smoked glass lies in what was asked for, on one axis.
#pragma once

namespace kernels {

// Both ends belong to it.
struct PaneSpan {
  int first, last;
};

// A pane of `percent` percent of the length, in the middle at position 0, at the start at -100 and
// at the end at 100; both ends are limited to 0..length - 1. The length is at least 1.
PaneSpan LayOutPane(int length, int percent, int position);

}  // namespace kernels
