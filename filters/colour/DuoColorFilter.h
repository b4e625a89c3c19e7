// Two-tone: the picture drawn in one colour for the shadows and one for the highlights.
#pragma once

#include <memory>
#include <span>

#include "core/FilterShapes.h"
#include "filters/colour/LightnessKernels.h"

struct DuoColorParameters {
  std::int32_t intensity = 100;  // percent
  std::uint8_t red = 0, green = 0, blue = 0;
  std::uint8_t red2 = 255, green2 = 255, blue2 = 255;

  static DuoColorParameters ActiveStart() { return {0, 255, 255, 255, 0, 0, 0}; }
  static constexpr int kLeastBuffer = 201;
  static std::span<const ParameterRow<DuoColorParameters>> Rows();
};

extern const FilterClass kDuoColorClass;

class CDuoColorFilter final : public ParameterFilter<RowFilter, DuoColorParameters> {
 public:
  explicit CDuoColorFilter(const FilterClass& row)
      : ParameterFilter(row,
                        {.sourceResult = SourceResult::StopsAboveZero, .abortMarksChange = true}) {}

  void Commit() override;

 private:
  void ReadText(const char* text) override;
  void PrintText(const DuoColorParameters& parameters, char* buffer, int size) override;
  void ChangeRow(BYTE* colour, BYTE* mask, int width) override;

  kernels::DuoColours colours;
  std::unique_ptr<kernels::DrawnTable> table;  // filled for `colours`; null without memory
};
