// Gradation curves: one for the luminance and one each for red, green and blue, through up to 12
// nodes.
#pragma once

#include "core/FilterShapes.h"
#include "editing/GradCurvesParameters.h"

extern const FilterClass kGradCurvesClass;

// A pull works with the active nodes, but with the pending counts and the pending `filterOn`.
class CGradCurvesFilter final : public ParameterFilter<RectangleFilter, GradCurvesParameters> {
 public:
  explicit CGradCurvesFilter(const FilterClass& row)
      : ParameterFilter(row, {SourceResult::StopsUnlessZero, true}) {}

 private:
  bool ChangeRectangle(const PullRectangle& rectangle) override;
};
