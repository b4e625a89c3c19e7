#include "filters/geometry/size/PrintCropFilter.h"

#include "base/Guid.h"
#include "filters/geometry/size/CropFilter.h"

const FilterClass kPrintCropClass = {
    .sortKey = 1,
    .className = "CPrintCropFilter",
    .progId = "ZNFilter.PrintCrop.1",
    .classId = base::Guid("{DC7296D3-71B2-4DFC-988A-F017ECFDE573}"),
    .order = 9500,
    .iconName = "icons4_crop",
    .nameKey = "PrintCrop",
    .gloss = "Crop for printing",
    .make = MakeFilter<CPrintCropFilter>,
    .describe = CPrintCropFilter::Describe};

CPrintCropFilter::CPrintCropFilter(const FilterClass& row) : ParameterFilter(row, {&kCropClass}) {}

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
