// The parameters of the gradation filter: one curve for the luminance and one each for red, green
// and blue, through up to 12 nodes.
#pragma once

#include <span>

#include "core/ParameterText.h"
#include "editing/CurveTables.h"

struct GradCurvesParameters {
  static constexpr int kCurves = 4;  // luminance, red, green, blue
  static constexpr int kNodes = 12;

  struct Curve {
    std::int32_t count = 2;  // as it was given; Nodes() limits it
    editing::CurveNode nodes[kNodes];

    // The diagonal, its last node repeated.
    Curve();
    bool operator==(const Curve&) const = default;
  };

  Curve curves[kCurves];
  bool linear = false;    // straight lines in place of splines
  bool yiqOn = false;     // the luminance curve leaves the colour differences alone
  bool filterOn = false;  // the picture passes unchanged without

  bool operator==(const GradCurvesParameters&) const = default;

  static GradCurvesParameters ActiveStart();
  static constexpr int kLeastBuffer = 1001;
  static std::span<const ParameterRow<GradCurvesParameters>> Rows();
};
