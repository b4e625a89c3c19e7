// Text in the picture.
#pragma once

#include "filters/text/LetteringFilter.h"

struct TextParameters : LetteringParameters {
  static TextParameters ActiveStart();
  static std::span<const ParameterRow<TextParameters>> Rows();
};

extern const FilterClass kTextClass;

class CTextFilter final : public LetteringFilter<TextParameters> {
  using LetteringFilter::LetteringFilter;
};
