// Exposure by channel: colours move away from the grey of their pixel, greys stay.
#pragma once

#include <span>

#include "core/FilterShapes.h"
#include "filters/pixels/LuminanceKernels.h"

struct Exposure2Parameters {
  std::int32_t red = 0, green = 0, blue = 0;

  static Exposure2Parameters ActiveStart() { return {-1, -1, -1}; }
  static constexpr int kLeastBuffer = 31;
  static std::span<const ParameterRow<Exposure2Parameters>> Rows();
};

extern const FilterClass kExposure2Class;

class CExposure2Filter final : public ParameterFilter<RowFilter, Exposure2Parameters> {
 public:
  explicit CExposure2Filter(const FilterClass& row)
      : ParameterFilter(row, {.sourceResult = SourceResult::StopsAboveZero,
                              .abortMarksChange = true,
                              .passesPixels = true}) {}

  void Commit() override;

 private:
  void ChangeRow(BYTE* colour, BYTE* mask, int width) override;

  kernels::GreyMoves moves;
};
