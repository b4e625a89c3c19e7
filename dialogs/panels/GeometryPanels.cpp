// Dialogs of size, place and crop.
#include <vector>

#include "dialogs/CropDialog.h"
#include "dialogs/RotateDialog.h"
#include "dialogs/panels/Panels.h"

namespace dialogs {
namespace {

constexpr PanelField kScaleFields[] = {
    {"MaximumHorizontalSize", "MaximumHorizontalSize=%d,", FieldKind::Integer, 100},
    {"MaximumVerticalSize", "MaximumVerticalSize=%d,", FieldKind::Integer, 100},
    {"KeepProportions", "KeepProportions=%d,", FieldKind::Integer, 1},
    {"AllowEnlarge", "AllowEnlarge=%d,", FieldKind::Flag}};
constexpr const char* kProportions[] = {"IDS_SCALE_PROP_FREE", "IDS_SCALE_PROP_KEEP",
                                        "IDS_SCALE_PROP_TURN"};
constexpr PanelRow kScaleRows[] = {
    InGroup(NumberRow("MaximumHorizontalSize", "IDS_SCALE_H", 1, 100000), "IDS_SCALE_MAXSIZE"),
    InGroup(NumberRow("MaximumVerticalSize", "IDS_SCALE_V", 1, 100000), "IDS_SCALE_MAXSIZE"),
    InGroup(ChoiceRow("KeepProportions", "IDS_SCALE_PROP", kProportions), "IDS_SCALE_MAXSIZE"),
    InGroup(CheckRow("AllowEnlarge", "IDS_SCALE_ENLARGE"), "IDS_SCALE_MAXSIZE")};

constexpr PanelField kScale100Fields[] = {
    {"HorizontalProz", "HorizontalProz=%d,", FieldKind::Integer, 100},
    {"VerticalProz", "VerticalProz=%d,", FieldKind::Integer, 100},
    {"KeepProportions", "KeepProportions=%d,", FieldKind::Flag, 1},
    {"AllowEnlarge", "AllowEnlarge=%d,", FieldKind::Flag, 1}};
constexpr PanelRow kScale100Rows[] = {
    InGroup(NumberRow("HorizontalProz", "IDS_SCALE100_H", 1, 1000), "IDS_SCALE100_MAXSIZE"),
    InGroup(NumberRow("VerticalProz", "IDS_SCALE100_V", 1, 1000), "IDS_SCALE100_MAXSIZE"),
    InGroup(CheckRow("KeepProportions", "IDS_SCALE100_PROP"), "IDS_SCALE100_MAXSIZE"),
    InGroup(CheckRow("AllowEnlarge", "IDS_SCALE_ENLARGE"), "IDS_SCALE100_MAXSIZE")};

constexpr PanelField kOffsetFields[] = {{"OffsetX", "OffsetX=%.3d,"}, {"OffsetY", "OffsetY=%.3d,"}};
constexpr PanelRow kOffsetRows[] = {NumberRow("OffsetX", "IDS_OFFSET_X", -100000, 100000),
                                    NumberRow("OffsetY", "IDS_OFFSET_Y", -100000, 100000)};

constexpr PanelField kRotateFields[] = {{"Angle", "Angle=%3.3f,", FieldKind::Real},
                                        {"MirrorOn", "MirrorOn=%.1d,", FieldKind::Flag}};
constexpr PanelRow RotateAngleRow() {
  PanelRow row = RealSliderRow("Angle", "IDS_COMMON_ANGLE", -360, 360, 0.01, 2);
  row.control = RowControl::Angle;
  return row;
}
constexpr PanelRow kRotateRows[] = {RotateAngleRow(), CheckRow("MirrorOn", "IDS_DREH_MIRROR")};

constexpr PanelField kPadFields[] = {
    {"AspectRatioX", "AspectRatioX=%d", FieldKind::Integer, 3},
    {"AspectRatioY", ", AspectRatioY=%d", FieldKind::Integer, 2},
    {"ForceRatio", ", ForceRatio=%d", FieldKind::Flag},
    {"Toggle", ", Toggle=%d", FieldKind::Flag},
    {"Landscape", ", Landscape=%d", FieldKind::Flag},
    {"PadColor", ", PadColor=%.6x", FieldKind::Hexadecimal, 0xFFFFFF},
    {"BottomAlign", ", BottomAlign=%d", FieldKind::Flag},
    {"Copy", ", Copy=%d", FieldKind::Integer, 1},
    {"PadRed", nullptr, FieldKind::Integer, 255},
    {"PadGreen", nullptr, FieldKind::Integer, 255},
    {"PadBlue", nullptr, FieldKind::Integer, 255}};
constexpr PanelRow kPadRows[] = {
    CheckRow("ForceRatio", "IDS_PRINTPAD_FORCE"),
    EnabledWhen(NumberRow("AspectRatioX", "IDS_PRINTPAD_X", 1, 1000000), "ForceRatio"),
    EnabledWhen(NumberRow("AspectRatioY", "IDS_PRINTPAD_Y", 1, 1000000), "ForceRatio"),
    EnabledWhen(CheckRow("Toggle", "IDS_PRINTPAD_TOGGLE"), "ForceRatio"),
    EnabledWhen(CheckRow("BottomAlign", "IDS_PRINTPAD_BOTTOM"), "ForceRatio"),
    ColourRow("PadRed", "PadGreen", "PadBlue", "IDS_COMMON_COLOR"),
    NumberRow("Copy", "IDS_PRINTPAD_COPIES", 1, 1000)};

std::vector<DialogClass> MakeCropDialogs() {
  return {{.className = "CRotCropDialog",
           .progId = "ZNFilter.RotCrop.1",
           .headerKey = "IDS_ROTCROP_HEADER",
           .defaultText = RotCropDefaultText(),
           .fields = RotCropFields(),
           .rows = RotCropRows(),
           .make = &NewCropDialog},
          {.className = "CPrintCropDialog",
           .progId = "ZNFilter.PrintCrop.1",
           .headerKey = "PrintCrop",
           .defaultText = PrintCropDefaultText(),
           .fields = PrintCropFields(),
           .rows = PrintCropRows(),
           .make = &NewCropDialog},
          {.className = "CCropDialog",
           .progId = "ZNFilter.Crop.1",
           .headerKey = "IDS_CROP_HEADER",
           .defaultText = CropDefaultText(),
           .fields = CropFields(),
           .rows = CropRows(),
           .make = &NewCropDialog},
          {.className = "CPrintPadDialog",
           .progId = "ZNFilter.PrintPad.1",
           .headerKey = "PrintPad",
           .defaultText = "AspectRatioX=3, AspectRatioY=2, ForceRatio=0, Toggle=0, Landscape=0, "
                          "PadColor=ffffff, BottomAlign=0, Copy=1",
           .fields = kPadFields,
           .rows = kPadRows,
           .make = &NewPadDialog}};
}

std::vector<DialogClass> MakeGeometryDialogs() {
  return {{.className = "CDrehDialog",
           .progId = "ZNFilter.Rotate.1",
           .headerKey = "IDS_DREH_HEADER",
           .helpKey = "HLP_DREH",
           .defaultText = "Angle=0.000,MirrorOn=0",
           .fields = kRotateFields,
           .rows = kRotateRows,
           .make = &NewRotateDialog},
          {.className = "CScaleDialog",
           .progId = "ZNFilter.Scale.1",
           .headerKey = "IDS_SCALE_HEADER",
           .helpKey = "HLP_SCALE",
           .defaultText = "MaximumHorizontalSize=100,MaximumVerticalSize=100,KeepProportions=1,"
                          "AllowEnlarge=0",
           .fields = kScaleFields,
           .rows = kScaleRows},
          {.className = "CScale100Dialog",
           .progId = "ZNFilter.Scale100.1",
           .headerKey = "IDS_SCALE100_HEADER",
           .helpKey = "HLP_SCALE100",
           .defaultText = "HorizontalProz=100,VerticalProz=100,KeepProportions=1,AllowEnlarge=1",
           .fields = kScale100Fields,
           .rows = kScale100Rows},
          {.className = "COffsetDialog",
           .progId = "ZNFilter.Offset.1",
           .headerKey = "IDS_OFFSET_HEADER",
           .helpKey = "HLP_OFFSET",
           .defaultText = "OffsetX=000,OffsetY=000",
           .fields = kOffsetFields,
           .rows = kOffsetRows}};
}

}  // namespace

std::span<const DialogClass> CropDialogs() {
  static const std::vector<DialogClass> rows = MakeCropDialogs();
  return rows;
}

std::span<const DialogClass> GeometryDialogs() {
  static const std::vector<DialogClass> rows = MakeGeometryDialogs();
  return rows;
}

}  // namespace dialogs
