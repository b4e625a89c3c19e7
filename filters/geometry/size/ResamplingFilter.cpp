#include "filters/geometry/size/ResamplingFilter.h"

#include <limits>

#include "filters/pixels/resampling/ReductionWindows.h"

namespace {

// What does not fit is too large for any picture, and refused when one is made.
int SideOf(double length) {
  constexpr int kLargest = std::numeric_limits<int>::max();
  if (!(length >= 1)) return 1;
  return length < kLargest ? static_cast<int>(length) : kLargest;
}

}  // namespace

void ResamplingFilter::SetOutput(Ratios newRatios, double width, double height) {
  if (input.width < 1 || input.height < 1) return;
  scaledBy = newRatios;
  output.width = output.extentWidth = SideOf(width);
  output.height = output.extentHeight = SideOf(height);
  output.offsetX = kernels::OutputStart(input.width, output.width, input.offsetX);
  output.offsetY = kernels::OutputStart(input.height, output.height, input.offsetY);
}

// Of input and result the smaller one is kept. A result that is too large is refused before the
// input takes memory. What the source answers is not looked at: an abort ends the computation, and
// anything else is scaled as it came. A picture that cannot be enlarged gives an empty result,
// which is given out and counts as stopped.
bool ResamplingFilter::Rebuild() {
  const bool isLarger = IsLargerThanInput();
  const bool hasResult = isLarger ? MemoryPicture::CanHold(result.width, result.height)
                                  : EnsurePictures(0, 0, result.width, result.height);
  if (isLarger) outputPicture.reset();
  bool done = pulled.width > 0 && pulled.height > 0 && hasResult && TakeInput();
  if (done && !isLarger) done = ComputeRows(outputPicture->Rows(result.width, result.height));
  isOpen = done && isLarger;
  if (!isOpen) DropInput();
  if (!done && !(outputPicture && Clear(*outputPicture))) outputPicture.reset();
  return done;
}

bool ResamplingFilter::IsLargerThanInput() const {
  const auto pixels = [](const PictureInfo& picture) {
    return std::int64_t{picture.width} * picture.height;
  };
  return kernels::CanEnlarge(pulled.width, usedRatios.x, usedRatios.y) &&
         pixels(result) > pixels(pulled);
}

bool ResamplingFilter::ComputeRows(const base::WritableRows& to) {
  return kernels::Resample(given, to, {usedRatios.x, usedRatios.y, pulled.offsetX, pulled.offsetY},
                           abort);
}
