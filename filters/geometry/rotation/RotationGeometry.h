// The numbers of a rotation: quarter turns, shears, sizes and places.
#pragma once

#include <cstdint>

namespace kernels {

// What a turn makes of a picture, from its size alone. A turn is a number of quarter turns and a
// rest of at most 45 degrees, which three shears do, along the rows, the columns and the rows.
// Lengths in pixels, positive angles counter-clockwise.
struct RotationGeometry {
  bool isQuarterTurn = true;  // nothing but quarter turns
  int quarterTurns = 0;       // 0 to 3
  double rowShear = 0;        // pixels a row is moved by, a row
  double columnShear = 0;     // the same for columns
  // How far the centre of the turn moves, whole pixels and the rest.
  std::int16_t shiftX = 0, shiftY = 0;
  double restX = 0, restY = 0;
  // After the quarter turns.
  std::int64_t turnedWidth = 0, turnedHeight = 0;
  // The widest moves of rows and columns, from one side to the other; even, with the sign of the
  // shear.
  std::int64_t rowReach = 0, columnReach = 0;
  // The result, and where it lies in the picture that holds the shears.
  std::int64_t width = 0, height = 0;
  std::int64_t cutX = 0, cutY = 0;

  // Columns of the picture between the shears, which has turnedHeight rows.
  std::int64_t ShearedWidth() const { return turnedWidth + (rowReach < 0 ? -rowReach : rowReach); }
  // Where the sheared picture lies, as seen from the result.
  std::int64_t PlaceX() const;
  std::int64_t PlaceY() const;
  // Where a point of the picture comes to lie, in 16-bit arithmetic.
  std::int16_t MapX(int x) const;
  std::int16_t MapY(int y) const;
};

// Columns and rows with nothing in them that a turn adds on each side when it is more than quarter
// turns.
inline constexpr int kTurnMarginX = 1;
inline constexpr int kTurnMarginY = 3;

// Degrees rounded to hundredths; angles of which there are none count as 0. The centre is an offset
// from the middle. Any size from 0.
RotationGeometry ComputeRotation(double degrees, int centerX, int centerY, int width, int height);

}  // namespace kernels
