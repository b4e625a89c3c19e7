// Unsharp mask: sharpens by adding what a blur takes away.
#pragma once

#include <span>

#include "core/FilterShapes.h"
#include "filters/detail/GaussTaps.h"

struct UnsharpMaskParameters {
  std::int32_t percent = 120;        // strength; any number
  double radius = 2.7;               // pixels
  std::int32_t threshold = 0;        // least difference that is sharpened, in levels
  std::int32_t onLuminanceOnly = 1;  // not 0: brightness alone
  std::int32_t on = 1;               // travels with the text, without effect on the picture

  static UnsharpMaskParameters ActiveStart() { return {0, 0.0, 0, 255, 0}; }
  static constexpr int kLeastBuffer = 101;
  static std::span<const ParameterRow<UnsharpMaskParameters>> Rows();
};

extern const FilterClass kUnsharpMaskClass;

class CUnsharpMaskFilter final : public ParameterFilter<RectangleFilter, UnsharpMaskParameters> {
 public:
  explicit CUnsharpMaskFilter(const FilterClass& row)
      : ParameterFilter(row, {.sourceResult = SourceResult::StopsUnlessZero}) {}

 private:
  std::optional<RowReach> Reach() override { return RowReach{kernels::ReachOf(Taps(Active()))}; }
  // Not normalised.
  kernels::GaussTaps Taps(const UnsharpMaskParameters& now) const;
  bool ChangeRectangle(const PullRectangle& rectangle) override;
};
