// What a shadow's parameters come to: its offset, the room it takes, the light of the relief.
#pragma once

#include <cstdint>

#include "filters/frames/MaskFilters.h"

namespace kernels {

struct ShadowForm {
  int direction = 0;  // tenths of a degree, 0 to 3600
  bool isInner = false;
  int intensity = 0;  // of the relief, percent
  int density = 0;    // of the shadow, percent
  int blur = 0, size = 0, distance = 0;
};

// In pixels. The margins are what the result is larger than the picture.
struct ShadowLayout {
  int offsetX = 0, offsetY = 0;
  int blurPasses = 0, blurFifths = 0;
  int left = 0, right = 0, top = 0, bottom = 0;
  ReliefKernel relief = {};
};

// The direction runs around a square rather than a circle, in steps of 22.5 degrees and thus at
// distances that are multiples of halves. Margins are never below 0, and the moved picture lies
// within them.
ShadowLayout LayOutShadow(const ShadowForm& form);

}  // namespace kernels
