// Colour balance: shifts between opposite colours, lightness and saturation, for all colours and
// for each of six sectors of hue.
#pragma once

#include <array>
#include <span>

#include "core/FilterShapes.h"
#include "filters/colour/HueSectors.h"

struct ColCorExParameters {
  static constexpr int kRanges = 1 + kernels::kHueSectors;
  // Percent: cyan to red, magenta to green, yellow to blue, lightness, saturation.
  static constexpr int kSliders = 5;

  // For all colours, then for the sectors; the sliders of each in a row.
  std::array<std::int32_t, kRanges* kSliders> values = {};

  static ColCorExParameters ActiveStart();
  static constexpr int kLeastBuffer = 0;
  static std::span<const ParameterRow<ColCorExParameters>> Rows();
};

extern const FilterClass kColCorExClass;

class CColCorExFilter final : public ParameterFilter<RowFilter, ColCorExParameters> {
 public:
  explicit CColCorExFilter(const FilterClass& row)
      : ParameterFilter(row, {.abortMarksChange = true}) {}

  void Commit() override;

 private:
  kernels::BalanceSlider Slider(int number) const;
  void ChangeRow(BYTE* colour, BYTE* mask, int width) override;

  kernels::Balance balance;
};
