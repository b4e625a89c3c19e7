#include "filters/detail/ConvolutionFilter.h"

#include <vector>

#include "base/Rows.h"

namespace {

// The picture's rows as the inner part of a picture that is one pixel larger on every side. The
// pixels of that frame are nobody's: a source that is asked for the inner part leaves them alone.
class FramedPicture {
 public:
  FramedPicture(MemoryPicture& picture, int width, int height)
      : frame(base::ColourBytes(width + 2)) {
    const auto rowCount = static_cast<std::size_t>(height) + 2;
    colourRows.assign(rowCount, frame.data());
    maskRows.assign(rowCount, frame.data());
    for (int y = 0; y < height; ++y) {
      colourRows[static_cast<std::size_t>(y) + 1] = picture.ColourRows()[y] - base::kBytesPerPixel;
      maskRows[static_cast<std::size_t>(y) + 1] = picture.MaskRows()[y] - 1;
    }
  }

  BYTE** ColourRows() { return colourRows.data(); }
  BYTE** MaskRows() { return maskRows.data(); }

 private:
  std::vector<BYTE> frame;
  std::vector<BYTE*> colourRows, maskRows;
};

}  // namespace

// The picture is pulled to where the result shall lie and convolved in place. Whatever the source
// answers, it is convolved: a source that has nothing to deliver leaves it blank.
bool ConvolutionFilter::Rebuild() {
  const kernels::Kernel3x3 kernel = kernels::BlendKernel(table, Strength());
  const int width = result.width;
  const int height = result.height;
  if (!EnsurePictures(0, 0, width, height)) return false;
  outputPicture->Clear();
  FramedPicture framed(*outputPicture, width, height);
  source->ReadRows(1, 1, 0, 0, width, height, framed.ColourRows(), framed.MaskRows());
  return kernels::Convolve3x3(
      kernel, {outputPicture->ColourRows(), outputPicture->MaskRows(), 0, 0, width, height},
      {0, 0, width, height}, abort);
}
