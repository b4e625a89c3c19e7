// Transparency: the whole picture made see-through.
#pragma once

#include <span>

#include "core/FilterShapes.h"

struct TransParameters {
  // 255 the mask stays, 0 all transparent; the text counts the other way, 0 to 100.
  std::uint8_t keep = 255;

  static TransParameters ActiveStart() { return {.keep = 0}; }
  static constexpr int kLeastBuffer = 31;
  static std::span<const ParameterRow<TransParameters>> Rows();
};

extern const FilterClass kTransClass;

class CTransFilter final : public ParameterFilter<RowFilter, TransParameters> {
 public:
  explicit CTransFilter(const FilterClass& row) : ParameterFilter(row, {}) {}

 private:
  void ChangeRow(BYTE* colour, BYTE* mask, int width) override;
  bool WorksOnMask() const override { return true; }
};
