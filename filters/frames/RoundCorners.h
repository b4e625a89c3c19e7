// Corners of a mask plane cut round, smooth at the edge.
#pragma once

#include <cstdint>

namespace kernels {

// The share of a rectangle that lies under the circle of this radius which touches both axes. The
// rectangle lies at x and y of 0 to the radius and has an area. Exact to about 1e-7, and the same
// bits on every system: it takes no more than square roots.
double ShareUnderCircle(double left, double right, double low, double high, double radius);

// Cuts the corners of row y of a mask plane of width by height. In each quarter of the plane lies a
// circle that touches both of its edges: what is wholly outside gets 255, what the circle crosses
// keeps its opacity by the share under it, truncated. Where the radius is larger than half a side,
// the arcs of two quarters meet on the middle line. A radius below 1 or larger than a side does
// nothing. Any number of threads.
void RoundCornersOfRow(std::uint8_t* mask, int width, int height, int radius, int y);

// RoundCornersOfRow for all rows.
void RoundCorners(std::uint8_t* const* maskRows, int width, int height, int radius);

}  // namespace kernels
