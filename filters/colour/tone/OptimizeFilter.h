// Optimise: a tone curve on the luminance alone, and saturation.
#pragma once

#include <span>

#include "core/FilterShapes.h"
#include "filters/pixels/ByteTableKernels.h"

struct OptimizeParameters {
  std::int32_t gamma = 0, lights = 0, shadows = 0;
  std::int32_t saturation = 0;  // works at 80 percent of its value

  static OptimizeParameters ActiveStart() { return {-1, -1, -1, -1}; }
  static constexpr int kLeastBuffer = 31;  // though no text is that short
  static std::span<const ParameterRow<OptimizeParameters>> Rows();
};

extern const FilterClass kOptimizeClass;

class COptimizeFilter final : public ParameterFilter<RowFilter, OptimizeParameters> {
 public:
  explicit COptimizeFilter(const FilterClass& row)
      : ParameterFilter(row, {.sourceResult = SourceResult::EndsUnlessZero,
                              .abortMarksChange = true,
                              .passesPixels = true}) {}

  void Commit() override;

 private:
  void ChangeRow(BYTE* colour, BYTE* mask, int width) override;

  kernels::ByteTable table = {};
};
