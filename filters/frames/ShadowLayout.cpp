#include "filters/frames/ShadowLayout.h"

#include <algorithm>
#include <cstdlib>

#include "base/Arithmetic.h"

namespace kernels {
namespace {

constexpr int kStep = 225;  // tenths of a degree

int StepX(std::int64_t direction) {
  const std::int64_t step =
      direction <= 1800 ? direction / kStep - 4 : 4 - (direction - 1800) / kStep;
  return static_cast<int>(std::clamp<std::int64_t>(step, -2, 2));
}

int StepY(std::int64_t direction) {
  const std::int64_t step = direction < 900     ? -(direction / kStep)
                            : direction <= 2700 ? (direction - 900) / kStep - 4
                                                : 4 - (direction - 2700) / kStep;
  return static_cast<int>(std::clamp<std::int64_t>(step, -2, 2));
}

// The margins on the two sides of an axis along which the shadow is moved.
struct Sides {
  int low, high;
};

Sides SidesOf(const ShadowForm& form, std::int64_t offset, std::int64_t spread) {
  std::int64_t farSide = std::abs(offset) + spread;
  std::int64_t nearSide = std::max<std::int64_t>(spread - std::abs(offset), 0);
  std::int64_t least = form.intensity != 0 ? 1 : 0;
  if (form.size != 0 && form.isInner) least = std::max(least, spread);
  farSide = std::max(farSide, least);
  nearSide = std::max(nearSide, least);
  const Sides sides = {base::LimitToInt32(farSide), base::LimitToInt32(nearSide)};
  return offset < 0 ? sides : Sides{sides.high, sides.low};
}

// How far blur and size reach. A blur below 0 takes nothing away.
std::int64_t SpreadOf(const ShadowForm& form, int blurPasses) {
  std::int64_t base = form.intensity != 0 || form.blur != 0 || form.size != 0 ? 1 : 0;
  if (blurPasses != 0) base = blurPasses;
  return std::max<std::int64_t>(0, form.size + base);
}

int Sign(int value) {
  return value < 0 ? -1 : value > 0 ? 1 : 0;
}

// Light from the side that the shadow falls away from.
ReliefKernel ReliefOf(int stepX, int stepY, int intensity) {
  const int a = 5 * Sign(stepX);
  const int b = 5 * Sign(stepY);
  const int slopes[9] = {a + b, b, b - a, a, 0, -a, a - b, -b, -(a + b)};
  ReliefKernel relief;
  for (int i = 0; i < 9; ++i) {
    relief.weight[i] = static_cast<double>(std::int64_t{slopes[i]} * intensity) / 500.0;
  }
  return relief;
}

}  // namespace

ShadowLayout LayOutShadow(const ShadowForm& form) {
  ShadowLayout layout;
  const int stepX = StepX(form.direction);
  const int stepY = StepY(form.direction);
  layout.blurPasses = form.blur / 5;
  layout.blurFifths = form.blur % 5;
  layout.relief = ReliefOf(stepX, stepY, form.intensity);
  if (form.density == 0) {
    layout.left = layout.right = layout.top = layout.bottom = form.intensity != 0 ? 1 : 0;
    return layout;
  }
  layout.offsetX = base::LimitToInt32(std::int64_t{stepX} * form.distance / 2);
  layout.offsetY = base::LimitToInt32(std::int64_t{stepY} * form.distance / 2);
  const std::int64_t spread = SpreadOf(form, layout.blurPasses);
  const Sides across = SidesOf(form, layout.offsetX, spread);
  const Sides upward = SidesOf(form, layout.offsetY, spread);
  layout.left = across.low;
  layout.right = across.high;
  layout.top = upward.low;
  layout.bottom = upward.high;
  return layout;
}

}  // namespace kernels
