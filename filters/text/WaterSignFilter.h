// Watermark: a text or a picture, once or repeated over the picture.
#pragma once

#include "filters/text/LetteringFilter.h"

struct WaterSignParameters : LetteringParameters {
  WaterSignParameters() {
    size = 40;
    opacity = 30;
  }
  static WaterSignParameters ActiveStart();
  static std::span<const ParameterRow<WaterSignParameters>> Rows();
};

extern const FilterClass kWaterSignClass;

class WaterSignFilter final : public LetteringFilter<WaterSignParameters> {
  using LetteringFilter::LetteringFilter;
};
