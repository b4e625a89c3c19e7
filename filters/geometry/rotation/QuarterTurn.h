// Quarter turns of a picture, with or without a mirror.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/RowView.h"
#include "filters/geometry/rotation/Quads.h"
#include "filters/geometry/rotation/ShearKernels.h"

namespace kernels {

// Neighbouring rows.
struct Band {
  int y, height;
};

// A picture after 0 to 3 quarter turns counter-clockwise, mirrored left to right before them if so
// wished. Rows that become columns are read in tiles, while they are near.
class QuarterTurn {
 public:
  QuarterTurn(const base::RowView& turned, int quarterTurns, bool mirror,
              const ShearKernelTable& table = Choose<ShearKernelTable>());

  int Width() const { return isTransposed ? picture.height : picture.width; }
  int Height() const { return isTransposed ? picture.width : picture.height; }

  bool IsTransposed() const { return isTransposed; }

  // The rows come in bands, numbered from the last one on.
  int Bands() const { return (Height() + kBandRows - 1) / kBandRows; }
  Band BandAt(int number) const;
  // The distance of the rows of `quads` is given in quads. `to` holds all rows.
  void ReadBand(const Band& band, Quad* quads, std::ptrdiff_t stride) const;
  void ReadBand(const Band& band, const base::WritableRows& to) const;

 private:
  // Of a tile of the result. Pieces of its rows are long enough for the processor to foresee them
  // when they are written; a tile of quads stays in the second cache.
  static constexpr int kBandRows = 128;
  static constexpr int kColumns = 256;
  // Rows of the picture that are transposed together, in the first cache.
  static constexpr int kUprightRows = 64;

  void ReadUpright(int x, int y, int width, Quad* quads) const;
  // A tile that lies in the turned picture, and as much of it as is read upright at once.
  void ReadTransposed(int x, int y, int width, int height, Quad* quads,
                      std::ptrdiff_t stride) const;
  void ReadUprightTile(int x, int column, int width, int height, Quad* upright) const;
  void SplitTile(const Quad* tile, int x, int y, int width, int height,
                 const base::WritableRows& to) const;

  const base::RowView picture;
  const ShearKernelTable& kernels;
  const bool isTransposed;
  const bool isBackwardsX, isBackwardsY;  // after the transposition
};

}  // namespace kernels
