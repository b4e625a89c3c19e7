// Histogram: evens out the histogram of the rows that are asked for.
#pragma once

#include <span>

#include "core/FilterShapes.h"

struct HistoParameters {
  std::int32_t intensity = 0;  // percent: 0 spreads the levels that occur, 100 equalises

  static HistoParameters ActiveStart() { return {.intensity = -1}; }
  static constexpr int kLeastBuffer = 31;
  static std::span<const ParameterRow<HistoParameters>> Rows();
};

extern const FilterClass kHistoClass;

// Each request has a curve of its own: a picture that is pulled in bands gets one a band.
class CHistoFilter final : public ParameterFilter<RectangleFilter, HistoParameters> {
 public:
  explicit CHistoFilter(const FilterClass& row)
      : ParameterFilter(row, {.sourceResult = SourceResult::Ignored, .abortMarksChange = false}) {}

 private:
  bool ChangeRectangle(const PullRectangle& rectangle) override;
};
