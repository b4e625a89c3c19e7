// Sharpen: a pixel moves away from the four beside it.
#pragma once

#include <span>

#include "filters/detail/ConvolutionFilter.h"

struct ScharfParameters {
  std::uint8_t strength = 0;  // percent; 0 leaves the picture

  static ScharfParameters ActiveStart() { return {.strength = 255}; }
  static constexpr int kLeastBuffer = 31;
  static std::span<const ParameterRow<ScharfParameters>> Rows();
};

extern const FilterClass kScharfClass;

class CScharfFilter final : public VersionedConvolutionFilter<ScharfParameters> {
 public:
  explicit CScharfFilter(const FilterClass& row)
      : VersionedConvolutionFilter(row, kernels::kSharpenTable) {}
};
