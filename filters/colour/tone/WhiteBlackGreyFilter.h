// White, black and grey point: makes a picked colour neutral, and stretches the range if asked to.
#pragma once

#include <span>

#include "core/FilterShapes.h"
#include "filters/colour/tone/GreyPoint.h"

struct WhiteBlackGreyParameters {
  std::int32_t redG = 255, greenG = 255, blueG = 255;  // the picked colour
  std::int32_t mode = 0;
  std::int32_t opacity = 100;  // percent
  bool filterOn = true;

  static WhiteBlackGreyParameters ActiveStart() { return {0, 0, 0, 1, 0, false}; }
  static constexpr int kLeastBuffer = 41;
  static std::span<const ParameterRow<WhiteBlackGreyParameters>> Rows();
};

extern const FilterClass kWhiteBlackGreyClass;

// A pull works by the pending parameters, so that a change takes effect before it is committed. The
// automatic modes measure the rows that are asked for.
class CWhiteBlackGreyFilter final
    : public ParameterFilter<RectangleFilter, WhiteBlackGreyParameters> {
 public:
  explicit CWhiteBlackGreyFilter(const FilterClass& row)
      : ParameterFilter(row, {.sourceResult = SourceResult::EndsUnlessZero,
                              .abortMarksChange = false,
                              .takesLent = true}) {}

 private:
  bool ChangeRectangle(const PullRectangle& rectangle) override;
};
