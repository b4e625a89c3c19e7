// Gaussian blur: the picture softened evenly.
#pragma once

#include <span>

#include "core/FilterShapes.h"
#include "filters/detail/GaussTaps.h"

struct BlurGaussParameters {
  std::int32_t percent = 100;  // width of the bell, within the window that the radius sets
  double radius = 2.7;         // pixels

  static BlurGaussParameters ActiveStart() { return {0, 0.0}; }
  static constexpr int kLeastBuffer = 101;
  static std::span<const ParameterRow<BlurGaussParameters>> Rows();
};

extern const FilterClass kBlurGaussClass;

class CBlurGaussFilter final : public ParameterFilter<RectangleFilter, BlurGaussParameters> {
 public:
  explicit CBlurGaussFilter(const FilterClass& row)
      : ParameterFilter(row, {.sourceResult = SourceResult::StopsUnlessZero}) {}

 private:
  std::optional<RowReach> Reach() override { return RowReach{kernels::ReachOf(Taps(Active()))}; }
  // Not normalised.
  kernels::GaussTaps Taps(const BlurGaussParameters& now) const;
  bool ChangeRectangle(const PullRectangle& rectangle) override;
};
