// Selective blur: softens among neighbours of like value, so that edges stay.
#pragma once

#include <span>

#include "core/FilterShapes.h"
#include "filters/detail/GaussTaps.h"

struct BlurSelParameters {
  std::int32_t percent = 100;  // width of the bell, within the window that the radius sets
  double threshold = 1.0;      // three times the greatest difference that is averaged
  double radius = 2.7;         // pixels

  static BlurSelParameters ActiveStart() { return {0, 0.0, 0.0}; }
  static constexpr int kLeastBuffer = 101;
  static std::span<const ParameterRow<BlurSelParameters>> Rows();
};

extern const FilterClass kBlurSelClass;

class CBlurSelFilter final : public ParameterFilter<RectangleFilter, BlurSelParameters> {
 public:
  explicit CBlurSelFilter(const FilterClass& row)
      : ParameterFilter(row, {.sourceResult = SourceResult::StopsUnlessZero}) {}

 private:
  std::optional<RowReach> Reach() override { return RowReach{kernels::ReachOf(Taps(Active()))}; }
  // Not normalised.
  kernels::GaussTaps Taps(const BlurSelParameters& now) const;
  bool ChangeRectangle(const PullRectangle& rectangle) override;
};
