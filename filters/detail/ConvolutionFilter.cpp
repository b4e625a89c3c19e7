#include "filters/detail/ConvolutionFilter.h"

#include <limits>

namespace {

constexpr int kMostPixels = std::numeric_limits<int>::max() - 2;  // of a side, with the frame

}  // namespace

// What is not lent is pulled to where the result shall lie, in a frame of one pixel that is as good
// as a picture's own: a source that looks at the rows around its rectangle, or changes them, finds
// it there. Whatever the source answers, it is convolved: a source that has nothing to deliver
// leaves it blank.
bool ConvolutionFilter::TakeInput() {
  const bool goesOn = !abort;
  frame = BorrowInput() ? 0 : 1;
  if (IsLent()) {
    outputPicture.reset();
    return goesOn;
  }
  if (!EnsurePictures(0, 0, result.width + 2, result.height + 2)) return false;
  given = Framed();
  return PullInput(*outputPicture, 1, 1);
}

bool ConvolutionFilter::Rebuild() {
  isOpen = result.width <= kMostPixels && result.height <= kMostPixels && TakeInput();
  return isOpen;
}

bool ConvolutionFilter::ComputeRows(const base::WritableRows& to) {
  return kernels::Convolve3x3(kernels::BlendKernel(table, usedStrength), given, Inner(), to, abort);
}

// Our own copy in place. What an abort leaves of it is of no use.
bool ConvolutionFilter::Close() {
  if (IsLent()) return WholePictureFilter::Close();
  isOpen =
      !kernels::Convolve3x3(kernels::BlendKernel(table, usedStrength), Framed(), Inner(), abort);
  if (!isOpen) return true;
  DropPictures();
  selfChanged = true;
  return false;
}
