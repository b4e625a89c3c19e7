#include "filters/geometry/PrintCropFilter.h"

CPrintCropFilter::CPrintCropFilter(const FilterClass& row)
    : ParameterFilter(row, {"ZNFilter.Crop.1"}) {}

void CPrintCropFilter::ReadText(const char* text) {
  static_cast<PrintCropRecord&>(pending) = ReadRecord<PrintCropRecord>(text);
  GiveText(Part(0), PrintCrop({.leftMargin = pending.marginL,
                               .rightMargin = pending.marginR,
                               .bottomMargin = pending.marginB,
                               .topMargin = pending.marginT,
                               .fixRatioOn = false}));
}

HRESULT CPrintCropFilter::GetActiveParameter(char* buffer, int size) {
  return platform::Guard([&] {
    const auto crop = ReadRecord<CropRecord>(ActiveText(Part(0)).c_str());
    PrintCropParameters shown = Pending();
    shown.marginL = crop.leftMargin;
    shown.marginR = crop.rightMargin;
    shown.marginB = crop.bottomMargin;
    shown.marginT = crop.topMargin;
    PrintText(shown, buffer, size);
    return S_OK;
  });
}
