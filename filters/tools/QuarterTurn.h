// Quarter turns of a picture, with or without a mirror.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/Export.h"
#include "filters/tools/PictureRows.h"
#include "filters/tools/Quads.h"
#include "filters/tools/ShearKernels.h"

namespace kernels {

// A picture after 0 to 3 quarter turns counter-clockwise, mirrored left to right before them if so
// wished. Hands it out in tiles, so that rows that become columns are read while they are near.
class FXBOX_API QuarterTurn {
 public:
  static constexpr int kTile = 64;  // the longest side of a tile

  QuarterTurn(const PictureRows& turned, int quarterTurns, bool mirror,
              const ShearKernelTable& table = ActiveShearKernels());

  int Width() const { return isTransposed ? picture.height : picture.width; }
  int Height() const { return isTransposed ? picture.width : picture.height; }

  // The pixels from (x, y) on, which lie in the turned picture. The distance of the rows of `quads`
  // is given in quads.
  void ReadTile(int x, int y, int width, int height, Quad* quads, std::ptrdiff_t stride) const;
  // The rows from y on, at most kTile of them.
  void ReadRows(int y, int height, Quad* quads, std::ptrdiff_t stride) const;
  void ReadRows(int y, int height, std::uint8_t* const* colour, std::uint8_t* const* mask) const;

 private:
  void ReadUpright(int x, int y, int width, int height, Quad* quads, std::ptrdiff_t stride) const;
  void ReadTransposed(int x, int y, int width, int height, Quad* quads,
                      std::ptrdiff_t stride) const;
  // Calls read(x, width) for each tile of the rows.
  template <class Read>
  void ForTiles(Read read) const;

  const PictureRows picture;
  const ShearKernelTable& kernels;
  const bool isTransposed;
  const bool isBackwardsX, isBackwardsY;  // after the transposition
};

}  // namespace kernels
