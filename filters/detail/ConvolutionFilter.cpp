#include "filters/detail/ConvolutionFilter.h"

#include <limits>

namespace {

constexpr int kMostPixels = std::numeric_limits<int>::max() - 2;  // of a side, with the frame

}  // namespace

// The picture is pulled to where the result shall lie, in a frame of one pixel that is as good as a
// picture's own: a source that looks at the rows around its rectangle, or changes them, finds it
// there. Whatever the source answers, it is convolved: a source that has nothing to deliver leaves
// it blank.
bool ConvolutionFilter::Rebuild() {
  const int width = result.width;
  const int height = result.height;
  if (width > kMostPixels || height > kMostPixels) return false;
  if (!EnsurePictures(0, 0, width + 2, height + 2)) return false;
  isOpen = PullWhatComes(*outputPicture, 1, 1);
  return isOpen;
}

kernels::PictureRows ConvolutionFilter::Framed() const {
  return {outputPicture->ColourRows(),
          outputPicture->MaskRows(),
          0,
          0,
          result.width + 2,
          result.height + 2};
}

bool ConvolutionFilter::ComputeRows(BYTE* const* colour, BYTE* const* mask) {
  return kernels::Convolve3x3(kernels::BlendKernel(table, usedStrength), Framed(),
                              {1, 1, result.width, result.height},
                              kernels::ResultRows{colour, mask}, abort);
}

// In place. What an abort leaves is of no use.
bool ConvolutionFilter::Close() {
  isOpen = !kernels::Convolve3x3(kernels::BlendKernel(table, usedStrength), Framed(),
                                 {1, 1, result.width, result.height}, abort);
  if (!isOpen) return true;
  DropPictures();
  selfChanged = true;
  return false;
}
