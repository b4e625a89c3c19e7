// Sepia: brown tones of an old photograph, mixed with the picture.
#pragma once

#include <span>

#include "core/FilterShapes.h"

struct SepiaParameters {
  // 255 the picture stays, 0 full sepia; the text counts the other way, 0 to 100.
  std::uint8_t keep = 255;

  static SepiaParameters ActiveStart() { return {.keep = 0}; }
  static constexpr int kLeastBuffer = 31;
  static std::span<const ParameterRow<SepiaParameters>> Rows();
};

extern const FilterClass kSepiaClass;

class CSepiaFilter final : public ParameterFilter<RowFilter, SepiaParameters> {
 public:
  explicit CSepiaFilter(const FilterClass& row) : ParameterFilter(row, {}) {}

 private:
  void ChangeRow(BYTE* colour, BYTE* mask, int width) override;
};
