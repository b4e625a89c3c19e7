// The three shears of a rotation: they move rows, columns and rows again, by parts of a pixel.
#pragma once

#include <cstdint>
#include <vector>

#include "filters/geometry/rotation/QuarterTurn.h"
#include "filters/geometry/rotation/RotationGeometry.h"
#include "filters/geometry/rotation/ShearKernels.h"

namespace kernels {

// How far a row or column is moved: towards its end, or its start where the distance is not above
// 0.
struct LineMove {
  explicit LineMove(double distance);

  std::int64_t whole;  // pixels towards the end
  int step;            // the way it goes: 1 to the end, -1 to the start
  PixelPart part;      // of one more step
};

// A row of pixels with nothing at both ends.
class QuadRow {
 public:
  explicit QuadRow(int pixels) : quads(static_cast<std::size_t>(pixels) + 2, kNothing) {}
  Quad* Data() { return quads.data() + 1; }
  const Quad* Data() const { return quads.data() + 1; }
  int Width() const { return static_cast<int>(quads.size()) - 2; }

 private:
  std::vector<Quad> quads;
};

// Moves the line over `width` pixels of `result`, where its own first pixel lies at `place` before
// the move. There is nothing beside the line.
void MoveRow(const QuadRow& line, const LineMove& move, std::int64_t place, Quad* result, int width,
             const ShearKernelTable& kernels);

// Pixels without gaps between the rows; not owned.
struct QuadPicture {
  Quad* quads;
  int width, height;

  Quad* Row(std::int64_t y) const { return quads + y * width; }
};

// Moves the columns of a picture and hands out the rows of the result one after the other.
class ColumnShear {
 public:
  // Column x is moved by (x - middle) * shear - rest. The pixels may come later.
  ColumnShear(const QuadPicture& upright, double shear, double rest, const ShearKernelTable& table);

  // Any row, as counted before the move: below 0 and above the picture too. Fast where it comes
  // right ahead of the last one.
  void ReadRow(std::int64_t y, Quad* result);

 private:
  // Neighbouring columns that are moved by the same number of whole pixels.
  struct Run {
    int first, width;
    std::int64_t whole;
  };
  void AddColumn(int x, const LineMove& move);
  // The row after the whole pixels of the moves.
  void Gather(std::int64_t y, Quad* row) const;
  template <int kBlock>
  void GatherBlocks(std::int64_t y, Quad* row) const;

  const QuadPicture picture;
  const ShearKernelTable& kernels;
  std::vector<Run> runs;
  int widestRun = 0;
  // The columns on one side of `turn` go one way, the others the other way.
  int turn;
  int stepBefore = -1, stepBehind = -1;
  std::vector<std::uint8_t> of32;
  std::vector<std::int32_t> of16384;
  // Gathered rows: the one below, the one asked for last, the one above.
  std::vector<Quad> gathered[3];
  std::int64_t gatheredY = 0;
  bool isGathered = false;
};

// What is more than quarter turns. A picture of `turn.ShearedWidth()` by `turn.turnedHeight` holds
// the rows after the first shear; the two others are done row by row as the result is handed out.
class Shears {
 public:
  Shears(const RotationGeometry& turn, const QuadPicture& room,
         const ShearKernelTable& table = Choose<ShearKernelTable>());

  void TakeBand(const QuarterTurn& turned, const Band& band);
  // A row of the result, of turn.width pixels, once all bands are taken; best in descending order.
  void ReadRow(int y, std::uint8_t* colour, std::uint8_t* mask);

 private:
  // How far the first and the last shear move a row of the turned picture, which the last may have
  // above and below it.
  LineMove MoveOf(std::int64_t y, double rest) const;
  void TakeTransposed(const QuarterTurn& turned, const Band& band);
  // The first shear of what stands in `turnedRow`.
  void TakeRow(int y, int width);

  const RotationGeometry geometry;
  const QuadPicture picture;
  const ShearKernelTable& kernels;
  ColumnShear columns;
  std::vector<Quad> transposed;
  QuadRow turnedRow, shearedRow;
  // Of the result. A row is finished here before it goes to the memory, past the caches.
  std::vector<Quad> resultRow;
  std::vector<std::uint8_t> resultColour, resultMask;
};

}  // namespace kernels
