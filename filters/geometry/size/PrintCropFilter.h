// Crop for printing: a crop that keeps the size of the print beside it.
#pragma once

#include "filters/CompositeFilter.h"
#include "filters/FilterStatics.h"

struct PrintCropParameters {
  double marginL = 0.0, marginR = 1.0, marginB = 0.0, marginT = 1.0;
  double width = 15.0, height = 10.0;
  std::int32_t measur = 1;
  double ppi = 100.0;
  bool fixedPpi = false;

  static PrintCropParameters ActiveStart() { return {}; }
  static constexpr int kLeastBuffer = 250;
  static std::span<const ParameterRow<PrintCropParameters>> Rows();
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
