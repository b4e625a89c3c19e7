// Emboss: a relief, lit along one diagonal.
#pragma once

#include <span>

#include "filters/detail/ConvolutionFilter.h"

struct EmbossParameters {
  std::uint8_t strength = 0;  // percent; 0 leaves the picture

  static EmbossParameters ActiveStart() { return {.strength = 255}; }
  static constexpr int kLeastBuffer = 31;
  static std::span<const ParameterRow<EmbossParameters>> Rows();
};

extern const FilterClass kEmbossClass;

class CEmbossFilter final : public ParameterFilter<ConvolutionFilter, EmbossParameters> {
 public:
  explicit CEmbossFilter(const FilterClass& row) : ParameterFilter(row, kernels::kEmbossTable) {}

 private:
  double Strength() const override { return active.strength; }
};
