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

std::span<const ParameterRow<PrintCropParameters>> PrintCropParameters::Rows() {
  using R = PrintCropParameters;
  static constexpr ParameterRow<R> kRows[] = {
      {"MarginL", "MarginL=%.4lf", &R::marginL,
       Forced(0, 1, "left edge of what is kept, as a share of the width")},
      {"MarginR", ", MarginR=%.4lf", &R::marginR, Forced(0, 1, "right edge")},
      {"MarginB", ", MarginB=%.4lf", &R::marginB,
       Forced(0, 1, "bottom edge, as a share of the height")},
      {"MarginT", ", MarginT=%.4lf", &R::marginT, Forced(0, 1, "top edge")},
      {"Width", ", Width=%.4lf", &R::width, Forced(0.1, 1000, "width of the print")},
      {"Height", ", Height=%.4lf", &R::height, Forced(0.1, 1000, "height of the print")},
      {"Measur", ", Measur=%d", &R::measur, Forced(0, 1, "unit of the print's size")},
      {"PPI", ", PPI=%.4lf", &R::ppi, Forced(0.1, 10000, "pixels an inch")},
      {"FixedPPI", ", FixedPPI=%d", &R::fixedPpi, {.gloss = "the pixels an inch are fixed"}}};
  return kRows;
}

CPrintCropFilter::CPrintCropFilter(const FilterClass& row) : ParameterFilter(row, {&kCropClass}) {}

void CPrintCropFilter::ReadText(const char* text) {
  pending = ReadRecord<PrintCropParameters>(text);
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
