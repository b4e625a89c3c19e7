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
  return PullWhatComes(*outputPicture, 1, 1) &&
         kernels::Convolve3x3(
             kernels::BlendKernel(table, usedStrength),
             {outputPicture->ColourRows(), outputPicture->MaskRows(), 0, 0, width + 2, height + 2},
             {1, 1, width, height}, abort);
}
