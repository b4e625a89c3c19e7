// Brightness and contrast (Helligkeit und Kontrast), with saturation.
#pragma once

#include <span>

#include "core/FilterShapes.h"
#include "filters/pixels/ByteTableKernels.h"

struct HundKParameters {
  std::int32_t brightness = 0, contrast = 0, saturation = 0;

  static HundKParameters ActiveStart() { return {-1, -1, -1}; }
  static constexpr int kLeastBuffer = 51;
  static std::span<const ParameterRow<HundKParameters>> Rows();
};

extern const FilterClass kHundKClass;

class CHundKFilter final : public ParameterFilter<RowFilter, HundKParameters> {
 public:
  explicit CHundKFilter(const FilterClass& row)
      : ParameterFilter(row, {.abortMarksChange = true}) {}

  void Commit() override;

 private:
  void ChangeRow(BYTE* colour, BYTE* mask, int width) override;

  kernels::ByteTable table = {};
};
