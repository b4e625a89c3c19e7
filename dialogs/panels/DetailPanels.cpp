// Dialogs of the filters that look at a pixel's neighbours.
#include "dialogs/panels/Panels.h"

namespace dialogs {
namespace {

constexpr PanelField kScharfFields[] = {{"Sharpness", "Sharpness=%.3d,ExtraParam=|SHARP|"}};
constexpr PanelRow kScharfRows[] = {SliderRow("Sharpness", "IDS_POWER")};

constexpr PanelField kWeichFields[] = {{"Blurness", "Blurness=%.3d"}};
constexpr PanelRow kWeichRows[] = {SliderRow("Blurness", "IDS_POWER")};

constexpr PanelField kFindEdgesFields[] = {{"EdgeEnhance", "EdgeEnhance=%.3d"}};
constexpr PanelRow kFindEdgesRows[] = {SliderRow("EdgeEnhance", "IDS_POWER")};

constexpr PanelField kEmbossFields[] = {{"EmbossStrength", "EmbossStrength=%.3d"}};
constexpr PanelRow kEmbossRows[] = {SliderRow("EmbossStrength", "IDS_POWER")};

constexpr PanelRow kPercentRow = SliderRow("Percent", "IDS_COMMON_PERCENT", 1, 500);
constexpr PanelRow kRadiusRow = RealSliderRow("Radius", "IDS_COMMON_RADIUS", 0.1, 50);

constexpr PanelField kBlurGaussFields[] = {{"Percent", "Percent=%d", FieldKind::Integer, 100},
                                           {"Radius", ",Radius=%.1f", FieldKind::Real, 1}};
constexpr PanelRow kBlurGaussRows[] = {kPercentRow, kRadiusRow};

constexpr PanelField kBlurSelFields[] = {{"Percent", "Percent=%d", FieldKind::Integer, 100},
                                         {"Threshold", ", Threshold=%.1f", FieldKind::Real, 1},
                                         {"Radius", ",Radius=%.1f", FieldKind::Real, 1}};
constexpr PanelRow kBlurSelRows[] = {
    kPercentRow, RealSliderRow("Threshold", "IDS_COMMON_THRESHOLD", 0.1, 100), kRadiusRow};

constexpr PanelField kUnsharpFields[] = {
    {"Percent", "Percent=%d", FieldKind::Integer, 100},
    {"Radius", ",Radius=%.1f", FieldKind::Real, 1},
    {"Threshold", ",Threshold=%d", FieldKind::Integer, 0},
    {"OnLuminanceOnly", ",OnLuminanceOnly=%d", FieldKind::Flag, 1},
    {"On", ",On=%d", FieldKind::Flag, 1}};
constexpr PanelRow kUnsharpRows[] = {kPercentRow, kRadiusRow,
                                     SliderRow("Threshold", "IDS_COMMON_THRESHOLD", 0, 255),
                                     CheckRow("OnLuminanceOnly", "IDS_UNSHARPMASK_LUMINANCEONLY")};

constexpr PanelField kStaubFields[] = {
    {"MaxRgnSize", "MaxRgnSize=%.3d,", FieldKind::Integer, 5},
    {"GrayTolerance", "GrayTolerance=%.3d,", FieldKind::Integer, 45}};
constexpr PanelRow kStaubRows[] = {SliderRow("MaxRgnSize", "IDS_DUST_MAXREGIONSIZE", 2, 15),
                                   SliderRow("GrayTolerance", "IDS_DUST_GRAYTOLERANCE", 15, 90)};

constexpr DialogClass kDialogs[] = {
    {.className = "CStaubDialog",
     .progId = "ZNFilter.Staub.1",
     .headerKey = "IDS_STAUB_HEADER",
     .helpKey = "HLP_STAUB",
     .defaultText = "MaxRgnSize=005,GrayTolerance=045",
     .fields = kStaubFields,
     .rows = kStaubRows},
    {.className = "CUnsharpMaskDialog",
     .progId = "ZNFilter.UnsharpMask.1",
     .headerKey = "IDS_UNSHARPMASK_HEADER",
     .helpKey = "HLP_UNSHARPMASK",
     .defaultText = "Percent=120,Radius=2.7,Threshold=0,LuminanceOnly=1,On=1",
     .fields = kUnsharpFields,
     .rows = kUnsharpRows},
    {.className = "CScharfDialog",
     .progId = "ZNFilter.Sharpen.1",
     .headerKey = "IDS_SCHARF_HEADER",
     .helpKey = "HLP_SCHARF",
     .defaultText = "Sharpness=000,ExtraParam=|SHARP|",
     .fields = kScharfFields,
     .rows = kScharfRows,
     .sentSuffix = ",Version=3"},
    {.className = "CWeichDialog",
     .progId = "ZNFilter.Blur.1",
     .headerKey = "IDS_WEICH_HEADER",
     .helpKey = "HLP_WEICH",
     .defaultText = "Blurness=000",
     .fields = kWeichFields,
     .rows = kWeichRows,
     .sentSuffix = ",Version=3"},
    {.className = "CBlurGaussDialog",
     .progId = "ZNFilter.BlurGauss.1",
     .headerKey = "IDS_BLURGAUSS_HEADER",
     .helpKey = "HLP_BLURGAUSS",
     .defaultText = "Percent=100,Radius=2.7",
     .fields = kBlurGaussFields,
     .rows = kBlurGaussRows},
    {.className = "CBlurSelDialog",
     .progId = "ZNFilter.BlurSel.1",
     .headerKey = "IDS_BLURSEL_HEADER",
     .helpKey = "HLP_BLURSEL",
     .defaultText = "Percent=100,Threshold=1.0,Radius=2.7",
     .fields = kBlurSelFields,
     .rows = kBlurSelRows},
    {.className = "CFindEdgesDialog",
     .progId = "ZNFilter.FindEdges.1",
     .headerKey = "IDS_FINDEDGES_HEADER",
     .helpKey = "HLP_FINDEDGES",
     .defaultText = "EdgeEnhance=000",
     .fields = kFindEdgesFields,
     .rows = kFindEdgesRows},
    {.className = "CEmbossDialog",
     .progId = "ZNFilter.Emboss.1",
     .headerKey = "IDS_EMBOSS_HEADER",
     .helpKey = "HLP_EMBOSS",
     .defaultText = "EmbossStrength=000",
     .fields = kEmbossFields,
     .rows = kEmbossRows}};

}  // namespace

std::span<const DialogClass> DetailDialogs() {
  return kDialogs;
}

}  // namespace dialogs
