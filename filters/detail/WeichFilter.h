// Soften: a pixel is mixed with the eight around it.
#pragma once

#include <span>

#include "filters/detail/ConvolutionFilter.h"

struct WeichParameters {
  std::uint8_t strength = 0;  // percent; 0 leaves the picture

  static WeichParameters ActiveStart() { return {.strength = 255}; }
  static constexpr int kLeastBuffer = 31;
  static std::span<const ParameterRow<WeichParameters>> Rows();
};

extern const FilterClass kWeichClass;

class CWeichFilter final : public VersionedConvolutionFilter<WeichParameters> {
 public:
  explicit CWeichFilter(const FilterClass& row)
      : VersionedConvolutionFilter(row, kernels::kSoftenTable) {}
};
