#include "filters/geometry/rotation/QuarterTurn.h"

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

// Short pieces of many rows are fetched ahead of their use: the processor foresees long rows only.
constexpr int kForReading = 0;
constexpr int kForWriting = 1;
template <int kUse>
inline void Announce(const std::uint8_t* at, int bytes) {
  constexpr int kCacheLine = 64;
  for (int i = 0; i < bytes; i += kCacheLine) {
    __builtin_prefetch(at + i, kUse);
    asm volatile("");  // without it the compiler takes the loop for empty
  }
}

}  // namespace

QuarterTurn::QuarterTurn(const PictureRows& turned, int quarterTurns, bool mirror,
                         const ShearKernelTable& table)
    : picture(turned),
      kernels(table),
      isTransposed(quarterTurns % 2 == 1),
      isBackwardsX(BackwardsOf(quarterTurns, mirror).x),
      isBackwardsY(BackwardsOf(quarterTurns, mirror).y) {}

// Columns of the picture are read from the right to the left: what the processor fetches beyond
// each piece of a row is then what was read before, and not what would be forgotten until it is
// needed.
Band QuarterTurn::BandAt(int number) const {
  if (isTransposed && !isBackwardsY) number = Bands() - 1 - number;
  const int y = number * kTile;
  return {y, std::min(kTile, Height() - y)};
}

void QuarterTurn::ReadBand(const Band& band, Quad* quads, std::ptrdiff_t stride) const {
  if (isTransposed) {
    for (int x = 0; x < Width(); x += kTile) {
      ReadTransposed(x, band.y, std::min(kTile, Width() - x), band.height, quads + x, stride);
    }
  } else {
    for (int i = 0; i < band.height; ++i) {
      ReadUpright(0, band.y + i, Width(), quads + i * stride);
    }
  }
}

void QuarterTurn::ReadBand(const Band& band, std::uint8_t* const* colour,
                           std::uint8_t* const* mask) const {
  alignas(64) Quad tile[kTile * kTile];
  if (isTransposed) {
    for (int x = 0; x < Width(); x += kTile) {
      const int width = std::min(kTile, Width() - x);
      ReadTransposed(x, band.y, width, band.height, tile, kTile);
      SplitTile(tile, x, band.y, width, band.height, colour, mask);
    }
  } else {
    constexpr int kLongest = kTile * kTile;
    for (int y = band.y; y < band.y + band.height; ++y) {
      for (int x = 0; x < Width(); x += kLongest) {
        const int width = std::min(kLongest, Width() - x);
        ReadUpright(x, y, width, tile);
        SplitTile(tile, x, y, width, 1, colour, mask);
      }
    }
  }
}

void QuarterTurn::ReadUpright(int x, int y, int width, Quad* quads) const {
  const int row = isBackwardsY ? picture.height - 1 - y : y;
  const int column = isBackwardsX ? picture.width - x - width : x;
  kernels.join(picture.colourRows[row] + 3 * std::ptrdiff_t{column}, picture.maskRows[row] + column,
               quads, width);
  if (isBackwardsX) std::reverse(quads, quads + width);
}

void QuarterTurn::ReadTransposed(int x, int y, int width, int height, Quad* quads,
                                 std::ptrdiff_t stride) const {
  const int column = isBackwardsY ? Height() - y - height : y;
  if (isBackwardsY) {
    quads += (height - 1) * stride;
    stride = -stride;
  }
  alignas(64) Quad upright[kTile * kTile];
  for (int i = 0; i < width; ++i) {
    const int row = isBackwardsX ? picture.height - 1 - x - i : x + i;
    kernels.join(picture.colourRows[row] + 3 * std::ptrdiff_t{column},
                 picture.maskRows[row] + column, upright + i * kTile, height);
    const int ahead = isBackwardsX ? row - kTile : row + kTile;
    if (ahead < 0 || ahead >= picture.height) continue;
    Announce<kForReading>(picture.colourRows[ahead] + 3 * std::ptrdiff_t{column}, 3 * height);
    Announce<kForReading>(picture.maskRows[ahead] + column, height);
  }
  kernels.transpose(upright, kTile, quads, stride, height, width);
}

void QuarterTurn::SplitTile(const Quad* tile, int x, int y, int width, int height,
                            std::uint8_t* const* colour, std::uint8_t* const* mask) const {
  const int next = x + width;
  const int ahead = std::min(kTile, Width() - next);
  for (int i = 0; i < height; ++i) {
    kernels.split(tile + i * kTile, colour[y + i] + 3 * std::ptrdiff_t{x}, mask[y + i] + x, width);
    Announce<kForWriting>(colour[y + i] + 3 * std::ptrdiff_t{next}, 3 * ahead);
    Announce<kForWriting>(mask[y + i] + next, ahead);
  }
}

}  // namespace kernels
