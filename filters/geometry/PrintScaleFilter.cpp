#include "filters/geometry/PrintScaleFilter.h"

#include "filters/geometry/ScaleFilter.h"

namespace {

constexpr std::size_t kRotation = 0;
constexpr std::size_t kScale = 1;

// Quarters of a turn, with room for what is printed of an angle.
std::int32_t TurnOf(double angle) {
  return angle < 89.9 ? 0 : angle < 179.9 ? 1 : angle < 269.9 ? 2 : angle < 359.9 ? 3 : 0;
}

}  // namespace

CPrintScaleFilter::CPrintScaleFilter(const FilterClass& row)
    : ParameterFilter(row, {"ZNFilter.Rotate.1", "ZNFilter.Scale.1"}) {}

void CPrintScaleFilter::ReadText(const char* text) {
  static_cast<PrintScaleRecord&>(pending) = ReadRecord<PrintScaleRecord>(text);
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
    PrintText({{.printWidth = scale.maximumHorizontalSize,
                .printHeight = scale.maximumVerticalSize,
                .printTurn = TurnOf(rotation.angle)}},
              buffer, size);
    return S_OK;
  });
}
