// The parameters that invert mask and image background share: a colour and its transparency.
#pragma once

#include "core/ParameterText.h"

// The blank before the first comma belongs to the text of both filters.
template <class Parameters>
inline constexpr ParameterRow<Parameters> kMaskColourRows[] = {
    {"Blue", "Blue=%.3d ", &Parameters::blue, {.greatest = 255, .gloss = "blue of the colour"}},
    {"Green",
     ", Green=%.3d",
     &Parameters::green,
     {.greatest = 255, .gloss = "green of the colour"}},
    {"Red", ", Red=%.3d", &Parameters::red, {.greatest = 255, .gloss = "red of the colour"}},
    {"Transparency",
     ", Transparency=%.3d",
     &Parameters::transparency,
     {.gloss = "how much the mask is inverted, or shines through the colour"}}};
