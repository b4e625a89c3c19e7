#include "filters/detail/GaussBands.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include "base/Rows.h"

namespace kernels {
namespace {

// Rows that are finished together: each row of the band is fetched once for all of them.
constexpr int kRowsAtOnce = 16;
// What the processor's nearest cache holds of a band beside what else it needs.
constexpr int kCachedBytes = 32 << 10;
// A band of whole rows may be as large as this; a larger one is cut into strips that are smaller.
// With what a strip keeps for the next one, 24 megapixels of any shape stay below 64 MiB at every
// radius that a text can give.
constexpr int kMostBytes = 60 << 20;
constexpr int kStripBytes = 8 << 20;
// A strip is narrow enough for a quick answer to an abort.
constexpr int kMostStripPixels = 8192;

std::size_t Size(int count) {
  return static_cast<std::size_t>(count);
}

// One pass over all rows. The rows are numbered from the last to the first.
template <class Image>
class GaussPass {
 public:
  using Real = typename Image::Real;

  GaussPass(std::uint8_t* const* pictureRows, int pictureWidth, int pictureHeight,
            const GaussChange& change, const GaussSteps<Image>& imageSteps,
            const std::atomic<bool>& abortFlag)
      : rows(pictureRows),
        width(pictureWidth),
        height(pictureHeight),
        steps(imageSteps),
        numbers{change.taps.data(), static_cast<int>(change.taps.size()) - 1, change.threshold,
                change.amount},
        bandRows(std::min(height, 2 * numbers.radius + kRowsAtOnce)),
        stripPixels(StripPixels()),
        chunkPixels(ChunkPixels()),
        band(stripPixels, bandRows),
        line(stripPixels + static_cast<int>(kRowBlock) + 2 * numbers.radius, 1),
        deviations(chunkPixels, 1),
        window(Size(2 * numbers.radius + kRowsAtOnce)),
        abort(abortFlag) {
    const int lineNumbers =
        kChannels * (stripPixels + static_cast<int>(kRowBlock) + 2 * numbers.radius);
    std::fill_n(line.Row(0), lineNumbers, Real{0});
    if (stripPixels < width) {
      leftOfStrip = std::make_unique_for_overwrite<std::uint8_t[]>(Size(height) * LeftBytes());
    }
  }

  bool Run() {
    for (int x = 0; x < width; x += stripPixels) {
      if (!ChangeStrip(x, std::min(stripPixels, width - x))) return false;
    }
    return true;
  }

 private:
  static constexpr int kChannels = Image::kChannels;

  int StripPixels() const {
    const int bytes = bandRows * kChannels * static_cast<int>(sizeof(Real));  // of a column
    const int most = width <= kMostBytes / bytes ? width : kStripBytes / bytes;
    return std::clamp(most, 1, kMostStripPixels);
  }
  int ChunkPixels() const {
    const int block = static_cast<int>(kRowBlock);
    const int blocks = kCachedBytes / (bandRows * block * static_cast<int>(sizeof(Real)));
    return std::clamp(blocks, 1, kMostFinishedPixels / block) * block / kChannels;
  }

  std::uint8_t* Pixel(int row, int x) const {
    return rows[height - 1 - row] + base::ColourOffset(x);
  }
  Real* BandRow(int row) { return band.Row(row % bandRows); }
  std::size_t LeftBytes() const { return base::ColourBytes(numbers.radius); }

  bool ChangeStrip(int x, int pixels) {
    int blurred = 0;
    for (int row = 0; row < height; row += kRowsAtOnce) {
      const int end = std::min(row + kRowsAtOnce, height);
      for (; blurred < std::min(end + numbers.radius, height); ++blurred) {
        if (abort) return false;
        BlurRow(blurred, x, pixels);
      }
      OpenWindow(row, end);
      for (int at = 0; at < pixels; at += chunkPixels) {
        if (abort) return false;
        FinishChunk(row, end, x, at, std::min(chunkPixels, pixels - at));
      }
    }
    return true;
  }

  // The pass along a row, into the band.
  void BlurRow(int row, int x, int pixels) {
    const int radius = numbers.radius;
    const int loaded = std::min(pixels + radius, width - x);
    Real* const first = line.Row(0) + radius * kChannels;
    steps.load(Pixel(row, x), first, loaded);
    const Real* const last = first + (loaded - 1) * kChannels;
    Repeat(last, first + loaded * kChannels, pixels + radius - loaded);
    if (x == 0) {
      Repeat(first, line.Row(0), radius);
    } else {
      steps.load(LeftOf(row), line.Row(0), radius);
    }
    if (stripPixels < width) KeepForNextStrip(row, x, pixels);
    steps.blurLine(first, numbers, BandRow(row), WholeRowBlocks(Size(pixels * kChannels)));
  }

  // Copies of a pixel.
  void Repeat(const Real* pixel, Real* to, int count) const {
    for (int i = 0; i < count * kChannels; ++i) to[i] = pixel[i % kChannels];
  }

  // As many pixels as the radius left of the strip, as they were before that was changed.
  std::uint8_t* LeftOf(int row) { return leftOfStrip.get() + Size(row) * LeftBytes(); }
  void KeepForNextStrip(int row, int x, int pixels) {
    std::uint8_t* const left = LeftOf(row);
    const int radius = numbers.radius;
    if (x == 0) {
      for (std::size_t i = 0; i < LeftBytes(); ++i) left[i] = Pixel(row, 0)[i % 3];
    }
    const int fresh = std::min(radius, pixels);
    const std::size_t kept = base::ColourBytes(radius - fresh);
    std::memmove(left, left + base::ColourBytes(fresh), kept);
    std::memcpy(left + kept, Pixel(row, x + pixels - fresh), base::ColourBytes(fresh));
  }

  // The rows of the band around row..end - 1.
  void OpenWindow(int row, int end) {
    const int first = row - numbers.radius;
    for (int i = first; i < end + numbers.radius; ++i) {
      window[Size(i - first)] = BandRow(std::clamp(i, 0, height - 1));
    }
  }

  // The pass across the rows, and the bytes.
  void FinishChunk(int row, int end, int x, int at, int pixels) {
    const std::size_t first = Size(at * kChannels);
    for (int y = row; y < end; ++y) {
      const Real* const* const around = window.data() + (y - row) + numbers.radius;
      steps.deviateRows(around, first, numbers, deviations.Row(0),
                        WholeRowBlocks(Size(pixels * kChannels)));
      steps.finish(Pixel(y, x + at), *around + first, deviations.Row(0), numbers, pixels);
    }
  }

  std::uint8_t* const* const rows;
  const int width, height;
  const GaussSteps<Image>& steps;
  const GaussNumbers numbers;
  const int bandRows, stripPixels, chunkPixels;
  Image band;                                   // rows after the pass along them, in a ring
  Image line;                                   // a row before it, with its surroundings
  Image deviations;                             // of a chunk
  std::vector<const Real*> window;              // the band's rows around those that are finished
  std::unique_ptr<std::uint8_t[]> leftOfStrip;  // see LeftOf; null when there is one strip
  const std::atomic<bool>& abort;
};

}  // namespace

bool ChangeByGauss(std::uint8_t* const* rows, int width, int height, const GaussChange& change,
                   SimdLevel level, const std::atomic<bool>& abort) {
  if (width < 1 || height < 1) return true;
  const GaussKernelTable& kernels = Choose<GaussKernelTable>(level);
  const auto run = [&](const auto& steps) {
    return GaussPass(rows, width, height, change, steps, abort).Run();
  };
  try {
    switch (change.method) {
      case GaussMethod::Blur:
        return run(kernels.blur);
      case GaussMethod::Sharpen:
        return run(kernels.sharpen);
      case GaussMethod::SharpenBrightness:
        return run(kernels.sharpenBrightness);
      case GaussMethod::SelectiveBlur:
        return run(kernels.selectiveBlur);
    }
    return false;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

}  // namespace kernels
