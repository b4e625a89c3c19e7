#include "filters/pixels/Convolution.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <numeric>
#include <vector>

#include "base/Rows.h"
#include "filters/pixels/ConvolutionRow.h"
#include "filters/pixels/RowBlocks.h"

namespace kernels {
namespace {

constexpr int kCentre = 4;

std::uint8_t Convolved(const Kernel3x3& kernel, int centre, int sum) {
  const double value = centre + kernel.share * sum + kConvolutionAllowance;
  return static_cast<std::uint8_t>(value > 0 ? (value < 255 ? value : 255) : 0);
}

void ConvolveRow(const Kernel3x3& kernel, const ConvolutionRows& rows, std::uint8_t* result,
                 int width) {
  for (int at = 0; at < width * base::kBytesPerPixel; ++at) {
    const int centre = rows.colour[1][at];
    int sum = 0;
    for (int i = 0; i < 9; ++i) {
      const int neighbour = at + (i % 3 - 1) * base::kBytesPerPixel;
      const bool nothing = rows.nothing[i / 3][neighbour] != 0;
      sum += kernel.change[i] * (nothing ? centre : rows.colour[i / 3][neighbour]);
    }
    result[at] = Convolved(kernel, centre, sum);
  }
}

void SpreadNothing(std::uint8_t* nothing, const std::uint8_t* mask, int width) {
  for (int x = 0; x < width; ++x) {
    nothing[3 * x] = nothing[3 * x + 1] = nothing[3 * x + 2] =
        mask[x] == base::kNothing ? base::kNothing : base::kOpaque;
  }
}

struct Columns {
  int first, end;
  int Count() const { return end - first; }
};

// A copy of one row of the area, with the pixel on either side of it.
class FramedRow {
 public:
  explicit FramedRow(int areaWidth)
      : width(areaWidth),
        colour(base::ColourBytes(areaWidth + 2) + kConvolutionPadding),
        nothing(colour.size()) {}

  // Row y of the picture, from column x on, with the colours of the columns `columns`. A row
  // outside the picture does not count.
  void Load(const base::RowView& picture, int x, int y, const Columns& columns,
            const std::uint8_t* colours) {
    if (y < 0 || y >= picture.height) {
      SetNothing(-1, width + 1, base::kNothing);
      anyNothing = true;
      return;
    }
    std::memcpy(Colour() + base::ColourOffset(columns.first - x), colours,
                base::ColourBytes(columns.Count()));
    if (anyNothing) SetNothing(-1, width + 1, 0);
    const std::uint8_t* const mask = picture.mask ? picture.mask[y] + x : nullptr;
    SetNothing(-1, 0, x > 0 ? NothingAt(mask, -1) : base::kNothing);
    SetNothing(width, width + 1,
               x + width < picture.width ? NothingAt(mask, width) : base::kNothing);
    anyNothing = mask && LoadMask(mask);
  }

  const std::uint8_t* Colour() const { return colour.data() + base::kBytesPerPixel; }
  const std::uint8_t* Nothing() const { return nothing.data() + base::kBytesPerPixel; }
  bool AnyNothing() const { return anyNothing; }

 private:
  std::uint8_t* Colour() { return colour.data() + base::kBytesPerPixel; }

  void SetNothing(int first, int end, std::uint8_t value) {
    std::memset(nothing.data() + base::ColourOffset(first + 1), value,
                base::ColourBytes(end - first));
  }

  static std::uint8_t NothingAt(const std::uint8_t* mask, int at) {
    return mask && mask[at] == base::kNothing ? base::kNothing : base::kOpaque;
  }

  // The pixels between the two on either side. False when all of them count.
  bool LoadMask(const std::uint8_t* mask) {
    if (!std::memchr(mask, base::kNothing, static_cast<std::size_t>(width))) return false;
    Choose<ConvolutionKernels>().spreadNothing(nothing.data() + base::ColourOffset(1), mask, width);
    return true;
  }

  int width;
  std::vector<std::uint8_t> colour, nothing;
  bool anyNothing = false;
};

ConvolutionRows Around(const FramedRow& below, const FramedRow& row, const FramedRow& above,
                       const base::RowWay& ahead) {
  return {{below.Colour(), row.Colour(), above.Colour()},
          {below.Nothing(), row.Nothing(), above.Nothing()},
          below.AnyNothing() || row.AnyNothing() || above.AnyNothing(),
          ahead};
}

}  // namespace

Kernel3x3 BlendKernel(const KernelTable& table, double strength) {
  Kernel3x3 kernel = {};
  int common = 100 * table.divisor;
  int positive = 0;
  int negative = 0;
  for (int i = 0; i < 9; ++i) {
    const int change = table.weight[i] - (i == kCentre ? table.divisor : 0);
    common = std::gcd(common, std::abs(change));
    kernel.change[i] = static_cast<std::int8_t>(change);
  }
  for (std::int8_t& change : kernel.change) {
    change = static_cast<std::int8_t>(change / common);
    (change > 0 ? positive : negative) += std::abs(change);
  }
  kernel.per = 100 * table.divisor / common;
  kernel.share = strength / kernel.per;
  const bool whole = strength >= 0 && strength <= 255 && strength == std::floor(strength);
  // Sums are raised by a multiple of `per` until they are not negative, and must then stay below
  // 2^13; ConvolutionBlocks.h tells why.
  const int greatest = 255 * (positive + negative) + kernel.per;
  const bool narrow = greatest < (1 << 13) && kernel.per >= 100;
  kernel.steps = whole && narrow ? static_cast<int>(strength) : -1;
  return kernel;
}

const ConvolutionKernels& ConvolutionKernels::Plain() {
  static constexpr ConvolutionKernels kPlain = {ConvolveRow, SpreadNothing};
  return kPlain;
}

namespace {

// Which columns of the picture an area and the pixels on either side of it have.
Columns ColumnsAround(const PictureArea& area, const base::RowView& picture) {
  return {std::max(area.x - 1, 0), std::min(area.x + area.width + 1, picture.width)};
}

// Works on neighbouring rows of the area at a time.
class Convolver {
 public:
  Convolver(const Kernel3x3& blended, const base::RowView& convolved, const PictureArea& part)
      : kernel(blended), picture(convolved), area(part), columns(ColumnsAround(part, convolved)) {}

  // Convolves the rows from `begin` on to the one ahead of `end`, upwards by a step of 1 or
  // downwards by one of -1. rowAt(y) gives row y of the picture as it was, from the first column
  // on, write(y, convolve) has the row written by convolve(result), and ahead(y, read) tells where
  // row y is written and row `read` is read.
  template <class RowAt, class Write, class Ahead>
  bool Run(int begin, int end, int step, const RowAt& rowAt, const Write& write, const Ahead& ahead,
           const std::atomic<bool>& abort) const {
    const auto convolveRow = Choose<ConvolutionKernels>().convolveRow;
    std::array<FramedRow, 3> rows = {FramedRow(area.width), FramedRow(area.width),
                                     FramedRow(area.width)};
    const auto row = [&rows](int y) -> FramedRow& {
      return rows[static_cast<std::size_t>((y + 3) % 3)];
    };
    const auto load = [&](int y) {
      const bool exists = y >= 0 && y < picture.height;
      row(y).Load(picture, area.x, y, columns, exists ? rowAt(y) : nullptr);
    };
    load(begin - step);
    load(begin);
    for (int y = begin; y != end; y += step) {
      if (abort) return false;
      load(y + step);
      const base::RowWay next =
          ahead(y + step == end ? y : y + step, std::clamp(y + 2 * step, 0, picture.height - 1));
      write(y, [&](std::uint8_t* result) {
        convolveRow(kernel, Around(row(y - 1), row(y), row(y + 1), next), result, area.width);
      });
    }
    return true;
  }

 private:
  const Kernel3x3& kernel;
  const base::RowView picture;
  const PictureArea& area;
  const Columns columns;
};

}  // namespace

bool Convolve3x3(const Kernel3x3& kernel, const base::WritableRows& picture,
                 const PictureArea& area, const std::atomic<bool>& abort) {
  if (area.width < 1 || area.height < 1) return true;
  const Convolver convolver(kernel, picture, area);
  const Columns columns = ColumnsAround(area, picture);
  const RowBlocks blocks(
      picture.colour + area.y, static_cast<std::size_t>(base::ColourOffset(columns.first)),
      base::ColourBytes(columns.Count()), area.height, 1, base::RowsPerBand(area.width));
  const auto writeInPlace = [&](int y, const auto& convolve) {
    convolve(picture.colour[y] + base::ColourOffset(area.x));
  };
  return blocks.ForEach([&](int block) {
    const auto rowAt = [&](int y) { return blocks.Row(block, y - area.y); };
    const auto ahead = [&](int, int read) {
      return base::RowWay{rowAt(read), rowAt(read), picture.colour[read], picture.colour[read]};
    };
    return convolver.Run(area.y + blocks.First(block), area.y + blocks.First(block + 1), 1, rowAt,
                         writeInPlace, ahead, abort);
  });
}

bool Convolve3x3(const Kernel3x3& kernel, const base::RowView& picture, const PictureArea& area,
                 const base::WritableRows& result, const std::atomic<bool>& abort) {
  if (area.width < 1 || area.height < 1) return true;
  const Convolver convolver(kernel, picture, area);
  const Columns columns = ColumnsAround(area, picture);
  const auto rowAt = [&](int y) { return picture.colour[y] + base::ColourOffset(columns.first); };
  const auto write = [&](int y, const auto& convolve) {
    convolve(result.colour[y - area.y]);
    std::memcpy(result.mask[y - area.y], picture.mask[y] + area.x,
                static_cast<std::size_t>(area.width));
  };
  const auto ahead = [&](int y, int read) {
    return base::RowWay{rowAt(read), picture.mask[read] + area.x, result.colour[y - area.y],
                        result.mask[y - area.y]};
  };
  return base::ForEachBand(area.height, base::RowsPerBand(area.width), [&](int first, int end) {
    return convolver.Run(area.y + end - 1, area.y + first - 1, -1, rowAt, write, ahead, abort);
  });
}

}  // namespace kernels
