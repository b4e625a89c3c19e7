// Colour: more or less of red, green and blue.
#pragma once

#include <span>

#include "core/FilterShapes.h"
#include "filters/pixels/PointKernels.h"

struct ColorParameters {
  std::int32_t red = 0, green = 0, blue = 0;  // percent of the full level

  static ColorParameters ActiveStart() { return {.red = -1, .green = -1, .blue = -1}; }
  static constexpr int kLeastBuffer = 31;
  static std::span<const ParameterRow<ColorParameters>> Rows();
};

extern const FilterClass kColorClass;

class CColorFilter final : public ParameterFilter<RowFilter, ColorParameters> {
 public:
  explicit CColorFilter(const FilterClass& row)
      : ParameterFilter(row,
                        {.sourceResult = SourceResult::StopsAboveZero, .abortMarksChange = true}) {}

 private:
  void ChangeRow(BYTE* colour, BYTE* mask, int width) override;
};
