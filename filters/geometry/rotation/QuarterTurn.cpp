#include "filters/geometry/rotation/QuarterTurn.h"

#include <algorithm>

#include "base/Prefetch.h"

namespace kernels {
namespace {

// Which axes of the result run backwards, by quarter turns.
struct Backwards {
  bool x, y;
};
constexpr Backwards kPlain[] = {{false, false}, {true, false}, {true, true}, {false, true}};
constexpr Backwards kMirrored[] = {{true, false}, {true, true}, {false, true}, {false, false}};

const Backwards& BackwardsOf(int quarterTurns, bool mirror) {
  return (mirror ? kMirrored : kPlain)[quarterTurns];
}

// Short pieces of many rows: the processor foresees long rows only.
template <int kUse>
inline void Announce(const std::uint8_t* at, int bytes) {
  base::Announce<kUse>(at, static_cast<std::size_t>(bytes));
}

}  // namespace

QuarterTurn::QuarterTurn(const base::RowView& turned, int quarterTurns, bool mirror,
                         const ShearKernelTable& table)
    : picture(turned),
      kernels(table),
      isTransposed(quarterTurns % 2 == 1),
      isBackwardsX(BackwardsOf(quarterTurns, mirror).x),
      isBackwardsY(BackwardsOf(quarterTurns, mirror).y) {}

Band QuarterTurn::BandAt(int number) const {
  const int y = (Bands() - 1 - number) * kBandRows;
  return {y, std::min(kBandRows, Height() - y)};
}

void QuarterTurn::ReadBand(const Band& band, Quad* quads, std::ptrdiff_t stride) const {
  if (isTransposed) {
    for (int x = 0; x < Width(); x += kColumns) {
      ReadTransposed(x, band.y, std::min(kColumns, Width() - x), band.height, quads + x, stride);
    }
  } else {
    for (int i = 0; i < band.height; ++i) {
      ReadUpright(0, band.y + i, Width(), quads + i * stride);
    }
  }
}

void QuarterTurn::ReadBand(const Band& band, const base::WritableRows& to) const {
  alignas(64) Quad tile[kBandRows * kColumns];
  if (isTransposed) {
    for (int x = 0; x < Width(); x += kColumns) {
      const int width = std::min(kColumns, Width() - x);
      ReadTransposed(x, band.y, width, band.height, tile, kColumns);
      SplitTile(tile, x, band.y, width, band.height, to);
    }
  } else {
    constexpr int kLongest = kBandRows * kColumns;
    for (int y = band.y; y < band.y + band.height; ++y) {
      for (int x = 0; x < Width(); x += kLongest) {
        const int width = std::min(kLongest, Width() - x);
        ReadUpright(x, y, width, tile);
        SplitTile(tile, x, y, width, 1, to);
      }
    }
  }
}

void QuarterTurn::ReadUpright(int x, int y, int width, Quad* quads) const {
  const int row = isBackwardsY ? picture.height - 1 - y : y;
  const int column = isBackwardsX ? picture.width - x - width : x;
  kernels.join(picture.colour[row] + 3 * std::ptrdiff_t{column}, picture.mask[row] + column, quads,
               width);
  if (isBackwardsX) std::reverse(quads, quads + width);
}

void QuarterTurn::ReadTransposed(int x, int y, int width, int height, Quad* quads,
                                 std::ptrdiff_t stride) const {
  const int column = isBackwardsY ? Height() - y - height : y;
  if (isBackwardsY) {
    quads += (height - 1) * stride;
    stride = -stride;
  }
  alignas(64) Quad upright[kBandRows * kUprightRows];
  for (int first = 0; first < width; first += kUprightRows) {
    const int rows = std::min(kUprightRows, width - first);
    ReadUprightTile(x + first, column, rows, height, upright);
    kernels.transpose(upright, kBandRows, quads + first, stride, height, rows);
  }
}

void QuarterTurn::ReadUprightTile(int x, int column, int width, int height, Quad* upright) const {
  for (int i = 0; i < width; ++i) {
    const int row = isBackwardsX ? picture.height - 1 - x - i : x + i;
    kernels.join(picture.colour[row] + 3 * std::ptrdiff_t{column}, picture.mask[row] + column,
                 upright + i * kBandRows, height);
    const int ahead = isBackwardsX ? row - kUprightRows : row + kUprightRows;
    if (ahead < 0 || ahead >= picture.height) continue;
    Announce<base::kForReading>(picture.colour[ahead] + 3 * std::ptrdiff_t{column}, 3 * height);
    Announce<base::kForReading>(picture.mask[ahead] + column, height);
  }
}

void QuarterTurn::SplitTile(const Quad* tile, int x, int y, int width, int height,
                            const base::WritableRows& to) const {
  for (int i = 0; i < height; ++i) {
    kernels.split(tile + i * kColumns, to.colour[y + i] + 3 * std::ptrdiff_t{x}, to.mask[y + i] + x,
                  width);
    if (i + 1 == height) break;
    Announce<base::kForWriting>(to.colour[y + i + 1] + 3 * std::ptrdiff_t{x}, 3 * width);
    Announce<base::kForWriting>(to.mask[y + i + 1] + x, width);
  }
}

}  // namespace kernels
