#include "filters/detail/GaussBands.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include "base/Rows.h"
#include "base/Workers.h"

namespace kernels {
namespace {

// Rows that are worked on together: each row of the band is fetched once for all of them.
constexpr int kRowsAtOnce = kMostRows;
// What the processor's nearest cache holds of a band beside what else it needs. Fewer numbers of a
// row are not finished at once, as that takes 64 bytes together.
constexpr int kCachedBytes = 32 << 10;
constexpr int kLeastFinishedBlocks = 4;
// A strip of columns is so narrow that a band of it stays in the second cache, but not so narrow
// that most of what is loaded for it lies beside it; it never takes more than this. With what a
// strip keeps for the next one, 24 megapixels of any shape stay below 64 MiB at every radius that a
// text can give.
constexpr int kCachedStripBytes = 384 << 10;
constexpr int kMostStripBytes = 8 << 20;
// Rows of a strip are short enough for a quick answer to an abort: pixels, and pixels times radius.
constexpr int kMostStripPixels = 8192;
constexpr int kMostStripWork = 1 << 19;

std::size_t Size(int count) {
  return static_cast<std::size_t>(count);
}

int BandRows(int height, int radius) {
  return std::min(height, 2 * radius + kRowsAtOnce);
}

// Of a band and the rows that are blurred together.
template <class Image>
int ColumnBytes(int height, int radius) {
  return (BandRows(height, radius) + kRowsAtOnce) * Image::kChannels *
         static_cast<int>(sizeof(typename Image::Real));
}

template <class Image>
int StripPixels(int height, int radius) {
  const int bytes = ColumnBytes<Image>(height, radius);
  const int least = std::min(4 * radius, kMostStripBytes / bytes);
  const int most = std::min(kMostStripPixels, kMostStripWork / std::max(1, radius));
  const int pixels = std::min(std::max({1, least, kCachedStripBytes / bytes}), most);
  return pixels < 16 ? pixels : pixels / 16 * 16;  // in whole blocks
}

// The picture, cut into regions of whole columns that threads change side by side. Copies of the
// columns on either side of each border are taken first, as a region looks beyond its own. Columns,
// and not rows: what a region needs around it in the pass across the rows is then its own.
class GaussRegions {
 public:
  // Each region has at least `least` columns. The rows are numbered from the last to the first.
  GaussRegions(std::uint8_t* const* pictureRows, int pictureWidth, int pictureHeight,
               int kernelRadius, int least)
      : width(pictureWidth),
        height(pictureHeight),
        radius(kernelRadius),
        rows(pictureRows),
        count(base::BandsOf(width, least)),
        sides(Size(count - 1) * Size(height) * 2 * SideBytes()) {
    if (count > 1)
      base::ForEachBand(height, 64, [&](int first, int end) { KeepSides(first, end); });
  }

  int Count() const { return count; }
  int First(int region) const { return static_cast<int>(std::int64_t{width} * region / count); }
  std::uint8_t* Pixel(int row, int x) const {
    return rows[height - 1 - row] + base::ColourOffset(x);
  }
  // As many pixels as the radius before a border, and behind it, as they were. Borders count
  // from 1.
  std::size_t SideBytes() const { return base::ColourBytes(radius); }
  const std::uint8_t* Before(int border, int row) const {
    return sides.data() + SideAt(border, row);
  }
  const std::uint8_t* Behind(int border, int row) const {
    return Before(border, row) + SideBytes();
  }

  const int width, height, radius;

 private:
  std::size_t SideAt(int border, int row) const {
    return (Size(border - 1) * Size(height) + Size(row)) * 2 * SideBytes();
  }
  void KeepSides(int first, int end) {
    for (int row = first; row < end; ++row) {
      for (int border = 1; border < count; ++border) {
        std::copy_n(Pixel(row, First(border) - radius), 2 * SideBytes(),
                    sides.data() + SideAt(border, row));
      }
    }
  }

  std::uint8_t* const* const rows;
  const int count;
  std::vector<std::uint8_t> sides;
};

// One pass over all rows of a region.
template <class Image>
class GaussPass {
 public:
  using Real = typename Image::Real;

  GaussPass(const GaussRegions& picture, int number, const GaussChange& change,
            const GaussSteps<Image>& imageSteps, const std::atomic<bool>& abortFlag)
      : regions(picture),
        region(number),
        begin(regions.First(region)),
        edge(regions.First(region + 1)),
        height(regions.height),
        steps(imageSteps),
        numbers{change.taps.data(), static_cast<int>(change.taps.size()) - 1, change.threshold,
                change.amount},
        bandRows(BandRows(height, numbers.radius)),
        stripPixels(std::min(StripPixels<Image>(height, numbers.radius), edge - begin)),
        chunkPixels(ChunkPixels()),
        band(stripPixels, bandRows),
        rowsTogether(numbers.radius < kWideRadius ? 1 : kRowsAtOnce),
        lineBytes(kChannels * (stripPixels + 2 * numbers.radius) + 2 * static_cast<int>(kRowBlock)),
        lines(Size(rowsTogether * lineBytes)),
        scratch(rowsTogether * lineBytes / kChannels, 1),
        window(Size(2 * numbers.radius + kRowsAtOnce)),
        abort(abortFlag) {
    if (stripPixels < edge - begin) {
      leftOfStrip = std::make_unique_for_overwrite<std::uint8_t[]>(Size(height) * LeftBytes());
    }
  }

  bool Run() {
    for (int x = begin; x < edge; x += stripPixels) {
      if (!ChangeStrip(x, std::min(stripPixels, edge - x))) return false;
    }
    return true;
  }

 private:
  static constexpr int kChannels = Image::kChannels;

  int ChunkPixels() const {
    const int block = static_cast<int>(kRowBlock);
    const int blocks = kCachedBytes / (bandRows * block * static_cast<int>(sizeof(Real)));
    return std::clamp(blocks, kLeastFinishedBlocks, kMostFinishedPixels / block) * block /
           kChannels;
  }

  std::uint8_t* Pixel(int row, int x) const { return regions.Pixel(row, x); }
  Real* BandRow(int row) { return band.Row(row % bandRows); }
  std::size_t LeftBytes() const { return base::ColourBytes(numbers.radius); }

  bool ChangeStrip(int x, int pixels) {
    int blurred = 0;
    for (int row = 0; row < height; row += kRowsAtOnce) {
      const int end = std::min(row + kRowsAtOnce, height);
      const int needed = std::min(end + numbers.radius, height);
      while (blurred < needed) {
        if (abort) return false;
        const int count = std::min(rowsTogether, needed - blurred);
        BlurRows(blurred, count, x, pixels);
        blurred += count;
      }
      OpenWindow(row, end);
      for (int at = 0; at < pixels; at += chunkPixels) {
        if (abort) return false;
        FinishChunk(row, end, x, at, std::min(chunkPixels, pixels - at));
      }
    }
    return true;
  }

  // The pass along rows, into the band.
  void BlurRows(int row, int count, int x, int pixels) {
    GaussLines around;
    around.count = count;
    Real* blurred[kRowsAtOnce];
    for (int i = 0; i < count; ++i) {
      std::uint8_t* const bytes = lines.data() + i * lineBytes;
      PickLine(row + i, x, pixels, bytes);
      around.bytes[i] = bytes;
      around.next[i] = Pixel(std::min(row + count + i, height - 1), x);
      blurred[i] = BandRow(row + i);
    }
    steps.blurLines(around, numbers, scratch.Row(0), blurred,
                    WholeRowBlocks(Size(pixels * kChannels)));
  }

  // What is blurred of a row, with its surroundings.
  void PickLine(int row, int x, int pixels, std::uint8_t* line) {
    const int radius = numbers.radius;
    const int inside = std::min(pixels + radius, edge - x);
    std::uint8_t* const first = line + radius * kChannels;
    steps.pick(Pixel(row, x), first, inside);
    std::uint8_t* const behind = first + inside * kChannels;
    if (edge < regions.width) {
      steps.pick(regions.Behind(region + 1, row), behind, pixels + radius - inside);
    } else {
      Repeat(behind - kChannels, behind, pixels + radius - inside);
    }
    if (x == 0) {
      Repeat(first, line, radius);
    } else {
      steps.pick(x == begin ? regions.Before(region, row) : LeftOf(row), line, radius);
    }
    if (leftOfStrip) KeepForNextStrip(row, x, pixels);
  }

  // Copies of a pixel.
  static void Repeat(const std::uint8_t* pixel, std::uint8_t* to, int count) {
    for (int i = 0; i < count * kChannels; ++i) to[i] = pixel[i % kChannels];
  }

  // As many pixels as the radius left of the strip, as they were before that was changed.
  std::uint8_t* LeftOf(int row) { return leftOfStrip.get() + Size(row) * LeftBytes(); }
  void KeepForNextStrip(int row, int x, int pixels) {
    std::uint8_t* const left = LeftOf(row);
    const int radius = numbers.radius;
    if (x == 0) {
      for (std::size_t i = 0; i < LeftBytes(); ++i) left[i] = Pixel(row, 0)[i % 3];
    } else if (x == begin) {
      std::copy_n(regions.Before(region, row), LeftBytes(), left);
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
    std::uint8_t* colours[kRowsAtOnce];
    for (int y = row; y < end; ++y) colours[y - row] = Pixel(y, x + at);
    steps.finish(colours, end - row, window.data() + numbers.radius, first, numbers, pixels);
  }

  const GaussRegions& regions;
  const int region;
  const int begin, edge;  // of the region's columns
  const int height;
  const GaussSteps<Image>& steps;
  const GaussNumbers numbers;
  const int bandRows, stripPixels, chunkPixels;
  Image band;  // rows after the pass along them, in a ring
  const int rowsTogether, lineBytes;
  std::vector<std::uint8_t> lines;              // rows before that pass, with their surroundings
  Image scratch;                                // what it needs for them
  std::vector<const Real*> window;              // the band's rows around those that are finished
  std::unique_ptr<std::uint8_t[]> leftOfStrip;  // see LeftOf; null when there is one strip
  const std::atomic<bool>& abort;
};

// So many columns that copies and what is loaded twice stay a small part, and that all threads
// together stay within some 64 MiB.
template <class Image>
int LeastColumns(int width, int height, int radius) {
  constexpr std::int64_t kSideBytes = 32 << 20;
  constexpr int kNarrowest = 256;
  const std::int64_t stripBytes =
      std::int64_t{ColumnBytes<Image>(height, radius)} * StripPixels<Image>(height, radius);
  const std::int64_t sides = std::int64_t{6} * std::max(1, radius) * height;
  const auto count = static_cast<int>(std::clamp<std::int64_t>(
      kSideBytes / sides, 1, std::max<std::int64_t>(1, kSideBytes / stripBytes)));
  return std::max({kNarrowest, 4 * radius, width / count});
}

template <class Image>
bool ChangeRegions(std::uint8_t* const* rows, int width, int height, const GaussChange& change,
                   const GaussSteps<Image>& steps, const std::atomic<bool>& abort) {
  const int radius = static_cast<int>(change.taps.size()) - 1;
  const GaussRegions regions(rows, width, height, radius,
                             LeastColumns<Image>(width, height, radius));
  return base::ForEachBand(regions.Count(), 1, [&](int first, int end) {
    while (first < end && GaussPass(regions, first, change, steps, abort).Run()) ++first;
    return first == end;
  });
}

}  // namespace

bool ChangeByGauss(std::uint8_t* const* rows, int width, int height, const GaussChange& change,
                   SimdLevel level, const std::atomic<bool>& abort) {
  if (width < 1 || height < 1) return true;
  const GaussKernelTable& kernels = Choose<GaussKernelTable>(level);
  const auto run = [&](const auto& steps) {
    return ChangeRegions(rows, width, height, change, steps, abort);
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
