// Scale for printing: turns the picture by quarters, then fits it into a box.
#pragma once

#include "filters/CompositeFilter.h"
#include "filters/FilterStatics.h"

struct PrintScaleParameters {
  std::int32_t printWidth = 100, printHeight = 100;  // pixels
  std::int32_t printTurn = 0;                        // quarter turns

  static PrintScaleParameters ActiveStart() { return {}; }
  static constexpr int kLeastBuffer = 50;
  static std::span<const ParameterRow<PrintScaleParameters>> Rows();
};

extern const FilterClass kPrintScaleClass;

// A rotation and a scale filter. What is active is what they say of themselves, so that a box that
// has turned with the picture shows.
class CPrintScaleFilter final : public ParameterFilter<CompositeFilter, PrintScaleParameters> {
 public:
  explicit CPrintScaleFilter(const FilterClass& row);

  bool IsDirty() override { return CompositeFilter::IsDirty(); }
  void Commit() override {}
  HRESULT STDMETHODCALLTYPE GetActiveParameter(char* buffer, int size) override;

 private:
  void ReadText(const char* text) override;
};
