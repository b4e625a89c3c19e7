// Black and white: the grey picture, mixed with the coloured one.
#pragma once

#include <span>

#include "core/FilterShapes.h"

struct BlackWhiteParameters {
  std::int32_t amount = 100;  // percent

  static BlackWhiteParameters ActiveStart() { return {.amount = -1}; }
  static constexpr int kLeastBuffer = 31;
  static std::span<const ParameterRow<BlackWhiteParameters>> Rows();
};

extern const FilterClass kBlackWhiteClass;

class CBlackWhiteFilter final : public ParameterFilter<RowFilter, BlackWhiteParameters> {
 public:
  explicit CBlackWhiteFilter(const FilterClass& row) : ParameterFilter(row, {}) {}

 private:
  void ChangeRow(BYTE* colour, BYTE* mask, int width) override;
};
