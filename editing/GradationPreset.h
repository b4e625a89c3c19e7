// Presets of the gradation filter: the text of a .fp2 file.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "base/Export.h"
#include "editing/GradCurvesParameters.h"

struct GradationPreset {
  GradCurvesParameters curves;  // with `filterOn`

  // What the dialog showed.
  std::int32_t selected[GradCurvesParameters::kCurves] = {1, 1, 1, 1};  // node of a curve, from 1
  std::int32_t channel = 0;  // the curve: luminance, red, green, blue
  bool percent = false;
  bool grid = false;
  bool onlyActive = false;

  std::int32_t version = 2;  // of the text that it was read from
};

// Reads a text of version 1 or 2, with any bytes in it. Levels beyond 0..255, and what the dialog
// showed, are limited. Nothing is returned for anything else; `error` then names the line.
FXBOX_API std::optional<GradationPreset> ReadGradationPreset(std::string_view text,
                                                             std::string& error);

// The parameter text that makes a filter look like the preset.
FXBOX_API std::string ParameterTextOf(const GradationPreset& preset);

// The text of version 2.
FXBOX_API std::string PrintGradationPreset(const GradationPreset& preset);
