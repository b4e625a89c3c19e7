// The rotation done in the slowest way: pixel by pixel along single lines of an unlimited plane.
#pragma once

#include "filters/geometry/rotation/RotationGeometry.h"
#include "tests/support/Pictures.h"

namespace testing_support {

Picture TurnByModel(const Picture& given, const kernels::RotationGeometry& turn, bool mirror);

}  // namespace testing_support
