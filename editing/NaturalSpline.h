// The natural cubic spline: the second derivatives at its points.
#pragma once

#include <cstddef>
#include <span>

#include "base/Export.h"

namespace editing {

inline constexpr std::size_t kMostSplinePoints = 16;

// Writes the second derivative at each point, 0 at both ends. All spans have the same length.
// False, and nothing written, with fewer than two points or more than there may be, or when two
// neighbours or two next but one to each other have the same x.
FXBOX_API bool SolveNaturalSpline(std::span<const double> x, std::span<const double> y,
                                  std::span<double> secondDerivatives);

}  // namespace editing
