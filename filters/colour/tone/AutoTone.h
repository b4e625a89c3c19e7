// Automatic tone: the limits and the midtone gamma that a picture asks for.
#pragma once

#include "filters/pixels/Histogram.h"

namespace kernels {

// Any numbers; the high limit by its distance from white.
Limits LimitsByHand(int low, int fromWhite);

// Found limits, the low one raised and the high one lowered by corrections. So limited that a ramp
// between them always rises: 0..125 and 130..255.
Limits CorrectLimits(const Limits& found, int raiseLow, int lowerHigh);

// A midtone value -100..100 for a picture of `pixels`, from its mean luminance between two limits:
// a mean of 100 gives 0, a darker picture more, a brighter one less.
int EstimateMidtone(const Histogram& luminance, const Limits& limits, std::int64_t pixels);

// The gamma of a midtone value, rounded, limited to 0..255: 1 at 0, 1/2 at 100, 3 at -100.
ByteTable BuildMidtoneTable(int midtone);

}  // namespace kernels
