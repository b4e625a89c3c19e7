// The frame filters once more, naive and on whole pictures: what the filters are compared with.
#pragma once

#include "tests/support/Pictures.h"

namespace testing_support {

// With the start values of the keys.
struct PaneNumbers {
  int hori = 75, verti = 75, radius = 5, red = 180, green = 180, blue = 180;
  int shiftHori = 0, shiftVerti = 0, transparency = 0;
};
// Smoked glass on a request that is the whole picture.
Picture PaneOver(Picture picture, const PaneNumbers& numbers, double zoom);

struct MatNumbers {
  int bordersOn = 1, hori = 1, verti = 1, totalHori = 150, totalVerti = 150;
  int red = 0, green = 0, blue = 105, shiftHori = 0, shiftVerti = 0, transparency = 0;
};
// Passepartout with corners that are not round.
Picture MatAround(const Picture& picture, const MatNumbers& numbers, double zoom);

struct ShadowNumbers {
  int direction = 1350, innerOn = 0, intensity = 0, density = 0, blur = 20, size = 0, distance = 3;
  int red = 0, green = 0, blue = 0;
};
Picture ShadowOf(const Picture& picture, const ShadowNumbers& numbers, double zoom);

}  // namespace testing_support
