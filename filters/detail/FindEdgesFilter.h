// Find edges: what differs from its surroundings stays, the rest turns black.
#pragma once

#include <span>

#include "filters/detail/ConvolutionFilter.h"

struct FindEdgesParameters {
  std::uint8_t strength = 0;  // percent; 0 leaves the picture

  static FindEdgesParameters ActiveStart() { return {.strength = 255}; }
  static constexpr int kLeastBuffer = 31;
  static std::span<const ParameterRow<FindEdgesParameters>> Rows();
};

extern const FilterClass kFindEdgesClass;

class CFindEdgesFilter final : public ParameterFilter<ConvolutionFilter, FindEdgesParameters> {
 public:
  explicit CFindEdgesFilter(const FilterClass& row)
      : ParameterFilter(row, kernels::kFindEdgesTable) {}

 private:
  double Strength() const override { return active.strength; }
};
