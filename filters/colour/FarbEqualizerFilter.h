// Colour equaliser: more or less saturation for each of six sectors of hue.
#pragma once

#include <span>

#include "core/FilterShapes.h"
#include "filters/colour/HueSectors.h"

struct FarbEqualizerParameters {
  std::int32_t satR = 0, satY = 0, satG = 0, satC = 0, satB = 0, satM = 0;  // percent

  static FarbEqualizerParameters ActiveStart() { return {-1, -1, -1, -1, -1, -1}; }
  static constexpr int kLeastBuffer = 101;
  static std::span<const ParameterRow<FarbEqualizerParameters>> Rows();
};

extern const FilterClass kFarbEqualizerClass;

class CFarbEqualizerFilter final : public ParameterFilter<RowFilter, FarbEqualizerParameters> {
 public:
  explicit CFarbEqualizerFilter(const FilterClass& row)
      : ParameterFilter(row, {.abortMarksChange = true}) {}

  void Commit() override;

 private:
  void ChangeRow(BYTE* colour, BYTE* mask, int width) override;

  kernels::HueFactors factors;
};
