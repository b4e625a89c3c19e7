// Where picture and mat of a passepartout lie, on one axis.
#pragma once

namespace kernels {

// All in pixels of the result, which runs from 0 to size - 1. Sums that leave 32 bits stop at the
// last number.
struct MatAxis {
  int size = 0;
  // The part of the input that shows: `length` pixels from `source` on, at `place`.
  int place = 0, source = 0, length = 0;
  // What the mat leaves free, both ends included. The mat covers what lies before `first` and what
  // lies behind `last`; both may hold for a pixel, where a mat over the picture is wider than half
  // of it.
  int first = 0, last = 0;
};

// A mat of the given width around the larger of input and extent. A negative width lies over the
// input and adds nothing. `shift` moves the input within the result.
MatAxis LayOutBorder(int input, int extent, int border, int shift);

// A mat that fills up to a total size, which is never below that of the input. An extent that is
// larger counts where the input is centred.
MatAxis LayOutTotal(int input, int extent, int total, int shift);

}  // namespace kernels
