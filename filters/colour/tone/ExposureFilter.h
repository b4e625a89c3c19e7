// Exposure: a gamma, more or less saturation, and a second gamma.
#pragma once

#include <span>

#include "core/FilterShapes.h"
#include "filters/pixels/ByteTableKernels.h"

// The keys are those of a colour shift, whose dialog the filter uses.
struct ExposureParameters {
  std::int32_t before = 0;      // gamma ahead of the saturation
  std::int32_t saturation = 0;  // works at 80 percent of its value
  std::int32_t after = 0;       // gamma behind it

  static ExposureParameters ActiveStart() { return {-1, -1, -1}; }
  static constexpr int kLeastBuffer = 31;
  static std::span<const ParameterRow<ExposureParameters>> Rows();
};

extern const FilterClass kExposureClass;

class CExposureFilter final : public ParameterFilter<RowFilter, ExposureParameters> {
 public:
  explicit CExposureFilter(const FilterClass& row)
      : ParameterFilter(row, {.sourceResult = SourceResult::StopsAboveZero,
                              .abortMarksChange = true,
                              .passesPixels = true}) {}

  void Commit() override;

 private:
  void ChangeRow(BYTE* colour, BYTE* mask, int width) override;

  kernels::ByteTable before = {};
  kernels::ByteTable after = {};
  kernels::ByteTable both = {};
  double saturation = 0;  // percent
};
