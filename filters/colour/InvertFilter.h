// Invert: the negative, mixed with the picture.
#pragma once

#include <span>

#include "core/FilterShapes.h"

struct InvertParameters {
  std::int32_t amount = 0;  // percent

  static InvertParameters ActiveStart() { return {.amount = -1}; }
  static constexpr int kLeastBuffer = 31;
  static std::span<const ParameterRow<InvertParameters>> Rows();
};

extern const FilterClass kInvertClass;

class CInvertFilter final : public ParameterFilter<RowFilter, InvertParameters> {
 public:
  explicit CInvertFilter(const FilterClass& row) : ParameterFilter(row, {}) {}

 private:
  void ChangeRow(BYTE* colour, BYTE* mask, int width) override;
};
