// Hue, saturation, brightness: shifted for all colours and for each of six sectors of hue.
#pragma once

#include <span>

#include "core/FilterShapes.h"
#include "filters/colour/HueSectors.h"

struct HsbParameters {
  // Degrees, percent, percent; for all colours, then for the sectors.
  std::int32_t hue = 0, sat = 0, bright = 0;
  std::int32_t hueR = 0, satR = 0, brightR = 0;
  std::int32_t hueY = 0, satY = 0, brightY = 0;
  std::int32_t hueG = 0, satG = 0, brightG = 0;
  std::int32_t hueC = 0, satC = 0, brightC = 0;
  std::int32_t hueB = 0, satB = 0, brightB = 0;
  std::int32_t hueM = 0, satM = 0, brightM = 0;

  static HsbParameters ActiveStart();
  static constexpr int kLeastBuffer = 246;
  static std::span<const ParameterRow<HsbParameters>> Rows();
};

extern const FilterClass kHsbClass;

class CHsbFilter final : public ParameterFilter<RowFilter, HsbParameters> {
 public:
  explicit CHsbFilter(const FilterClass& row) : ParameterFilter(row, {.abortMarksChange = true}) {}

  void Commit() override;

 private:
  void ChangeRow(BYTE* colour, BYTE* mask, int width) override;

  kernels::HueChanges changes;
};
