#include "filters/geometry/PrintScaleFilter.h"

#include "base/Guid.h"
#include "filters/geometry/rotation/DrehFilter.h"
#include "filters/geometry/size/ScaleFilter.h"

namespace {

constexpr std::size_t kRotation = 0;
constexpr std::size_t kScale = 1;

// Quarters of a turn, with room for what is printed of an angle.
std::int32_t TurnOf(double angle) {
  return angle < 89.9 ? 0 : angle < 179.9 ? 1 : angle < 269.9 ? 2 : angle < 359.9 ? 3 : 0;
}

}  // namespace

const FilterClass kPrintScaleClass = {
    .sortKey = 2,
    .className = "CPrintScaleFilter",
    .progId = "ZNFilter.PrintScale.1",
    .classId = base::Guid("{B1BA1C46-7AA4-4459-9281-3BB34E281802}"),
    .order = 9500,
    .iconName = "icons_scale",
    .nameKey = "PrintScale",
    .gloss = "Scale and turn for printing",
    .example = "PrintWidth=160,PrintHeight=120",
    .make = MakeFilter<CPrintScaleFilter>,
    .describe = CPrintScaleFilter::Describe};

std::span<const ParameterRow<PrintScaleParameters>> PrintScaleParameters::Rows() {
  using R = PrintScaleParameters;
  static constexpr ParameterRow<R> kRows[] = {
      {"PrintWidth", "PrintWidth=%d", &R::printWidth,
       Forced(1, 1000000, "width of the box in pixels")},
      {"PrintHeight", ", PrintHeight=%d", &R::printHeight,
       Forced(1, 1000000, "height of the box in pixels")},
      {"PrintTurn", ", PrintTurn=%d", &R::printTurn, {.greatest = 3, .gloss = "quarter turns"}}};
  return kRows;
}

CPrintScaleFilter::CPrintScaleFilter(const FilterClass& row)
    : ParameterFilter(row, {&kDrehClass, &kScaleClass}) {}

void CPrintScaleFilter::ReadText(const char* text) {
  pending = ReadRecord<PrintScaleParameters>(text);
  GiveText(Part(kRotation), PrintParameters(RotationRecord{.angle = pending.printTurn * 90.0}));
  GiveText(Part(kScale), PrintParameters(ScaleRecord{.keepProportions = 2,
                                                     .allowEnlarge = true,
                                                     .maximumHorizontalSize = pending.printWidth,
                                                     .maximumVerticalSize = pending.printHeight}));
}

HRESULT CPrintScaleFilter::GetActiveParameter(char* buffer, int size) {
  return platform::Guard([&] {
    ScaleParameters scale;
    RotationRecord rotation;
    ReadParameters(ActiveText(Part(kScale)).c_str(), scale);
    ReadParameters(ActiveText(Part(kRotation)).c_str(), rotation);
    PrintText({.printWidth = scale.maximumHorizontalSize,
               .printHeight = scale.maximumVerticalSize,
               .printTurn = TurnOf(rotation.angle)},
              buffer, size);
    return S_OK;
  });
}
