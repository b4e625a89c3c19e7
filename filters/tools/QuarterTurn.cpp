#include "filters/tools/QuarterTurn.h"

#include <algorithm>

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

}  // namespace

QuarterTurn::QuarterTurn(const PictureRows& turned, int quarterTurns, bool mirror,
                         const ShearKernelTable& table)
    : picture(turned),
      kernels(table),
      isTransposed(quarterTurns % 2 == 1),
      isBackwardsX(BackwardsOf(quarterTurns, mirror).x),
      isBackwardsY(BackwardsOf(quarterTurns, mirror).y) {}

void QuarterTurn::ReadTile(int x, int y, int width, int height, Quad* quads,
                           std::ptrdiff_t stride) const {
  const int firstX = isBackwardsX ? Width() - x - width : x;
  const int firstY = isBackwardsY ? Height() - y - height : y;
  if (isBackwardsY) {
    quads += (height - 1) * stride;
    stride = -stride;
  }
  if (isTransposed) {
    ReadTransposed(firstX, firstY, width, height, quads, stride);
  } else {
    ReadUpright(firstX, firstY, width, height, quads, stride);
  }
}

void QuarterTurn::ReadUpright(int x, int y, int width, int height, Quad* quads,
                              std::ptrdiff_t stride) const {
  for (int i = 0; i < height; ++i, quads += stride) {
    kernels.join(picture.colourRows[y + i] + 3 * std::ptrdiff_t{x}, picture.maskRows[y + i] + x,
                 quads, width);
    if (isBackwardsX) std::reverse(quads, quads + width);
  }
}

void QuarterTurn::ReadTransposed(int x, int y, int width, int height, Quad* quads,
                                 std::ptrdiff_t stride) const {
  alignas(64) Quad upright[kTile * kTile];
  for (int i = 0; i < width; ++i) {
    const int row = isBackwardsX ? x + width - 1 - i : x + i;
    kernels.join(picture.colourRows[row] + 3 * std::ptrdiff_t{y}, picture.maskRows[row] + y,
                 upright + i * kTile, height);
  }
  kernels.transpose(upright, kTile, quads, stride, height, width);
}

template <class Read>
void QuarterTurn::ForTiles(Read read) const {
  for (int x = 0; x < Width(); x += kTile) read(x, std::min(kTile, Width() - x));
}

void QuarterTurn::ReadRows(int y, int height, Quad* quads, std::ptrdiff_t stride) const {
  ForTiles([&](int x, int width) { ReadTile(x, y, width, height, quads + x, stride); });
}

void QuarterTurn::ReadRows(int y, int height, std::uint8_t* const* colour,
                           std::uint8_t* const* mask) const {
  alignas(64) Quad tile[kTile * kTile];
  ForTiles([&](int x, int width) {
    ReadTile(x, y, width, height, tile, kTile);
    for (int i = 0; i < height; ++i) {
      kernels.split(tile + i * kTile, colour[y + i] + 3 * std::ptrdiff_t{x}, mask[y + i] + x,
                    width);
    }
  });
}

}  // namespace kernels
