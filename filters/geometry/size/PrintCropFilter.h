// Crop for printing: a crop that keeps the size of the print beside it.
#pragma once

#include "filters/CompositeFilter.h"
#include "filters/FilterStatics.h"

struct PrintCropParameters : PrintCropRecord {
  static PrintCropParameters ActiveStart() { return {}; }
  static constexpr int kLeastBuffer = 250;
};

extern const FilterClass kPrintCropClass;

class CPrintCropFilter final : public ParameterFilter<CompositeFilter, PrintCropParameters> {
 public:
  explicit CPrintCropFilter(const FilterClass& row);

  bool IsDirty() override { return CompositeFilter::IsDirty(); }
  void Commit() override {}
  // The active margins are those of the crop filter inside; the rest is what is pending.
  HRESULT STDMETHODCALLTYPE GetActiveParameter(char* buffer, int size) override;

 private:
  void ReadText(const char* text) override;
};
