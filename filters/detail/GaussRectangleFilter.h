// What the three Gaussian filters do with a rectangle of a pull.
#pragma once

#include <atomic>

#include "core/FilterShapes.h"
#include "filters/detail/GaussBands.h"

// Changes width x height pixels from the first row pointer and column 0 on, wherever the pull's
// destination lies: these filters take no notice of it. They see nothing outside their request, and
// leave the mask alone. False on an abort and without memory.
bool ChangeRectangleByGauss(const PullRectangle& rectangle, const kernels::GaussChange& change,
                            const std::atomic<bool>& abort);
