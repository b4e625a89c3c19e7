// Dialogs of the point filters.
#include "dialogs/panels/Panels.h"

namespace dialogs {
namespace {

constexpr PanelField kSepiaFields[] = {{"Sepia", "Sepia=%.3d"}};
constexpr PanelRow kSepiaRows[] = {SliderRow("Sepia", "IDS_POWER")};

constexpr PanelField kInvertFields[] = {{"Inversity", "Inversity=%.3d"}};
constexpr PanelRow kInvertRows[] = {SliderRow("Inversity", "IDS_POWER")};

constexpr PanelField kBlackWhiteFields[] = {
    {"BlackWhiteNess", "BlackWhiteNess=%.3d", FieldKind::Integer, 100}};
constexpr PanelRow kBlackWhiteRows[] = {SliderRow("BlackWhiteNess", "IDS_POWER")};

constexpr PanelField kTransFields[] = {{"Transparency", "Transparency=%.3d"}};
constexpr PanelRow kTransRows[] = {SliderRow("Transparency", "IDS_POWER")};

constexpr PanelField kColourFields[] = {
    {"Red", "Red=%.3d"}, {"Green", ",Green=%.3d"}, {"Blue", ",Blue=%.3d"}};
constexpr PanelRow kColourRows[] = {SliderRow("Red", "IDS_COLOR_RED", -100),
                                    SliderRow("Green", "IDS_COLOR_GREEN", -100),
                                    SliderRow("Blue", "IDS_COLOR_BLUE", -100)};

constexpr PanelField kAdoptFields[] = {{"ColorRed", "ColorRed=%.3d"},
                                       {"ColorGreen", ",ColorGreen=%.3d"},
                                       {"ColorBlue", ",ColorBlue=%.3d"},
                                       {"Intensity", ",Intensity=%.3d", FieldKind::Integer, 100}};
constexpr PanelRow kAdoptRows[] = {
    ColourRow("ColorRed", "ColorGreen", "ColorBlue", "IDS_COMMON_COLOR"),
    SliderRow("Intensity", "IDS_ADOPTCOLOR_INTENSITY")};

constexpr PanelField kDuoFields[] = {{"ColorRed", "ColorRed=%.3d"},
                                     {"ColorGreen", ",ColorGreen=%.3d"},
                                     {"ColorBlue", ",ColorBlue=%.3d"},
                                     {"Red2", ",Red2=%.3d", FieldKind::Integer, 255},
                                     {"Green2", ",Green2=%.3d", FieldKind::Integer, 255},
                                     {"Blue2", ",Blue2=%.3d", FieldKind::Integer, 255},
                                     {"Intensity", ",Intensity=%.3d", FieldKind::Integer, 100}};
constexpr PanelRow kDuoRows[] = {
    ColourRow("ColorRed", "ColorGreen", "ColorBlue", "IDS_DUOCOLOR_DARK"),
    ColourRow("Red2", "Green2", "Blue2", "IDS_DUOCOLOR_LIGHT"),
    SliderRow("Intensity", "IDS_ADOPTCOLOR_INTENSITY")};

constexpr PanelField kInvertMaskFields[] = {{"Red", "Red=%.3d", FieldKind::Integer, 255},
                                            {"Green", ",Green=%.3d", FieldKind::Integer, 255},
                                            {"Blue", ",Blue=%.3d", FieldKind::Integer, 255},
                                            {"Transparency", ",Transparency=%.3d"}};
constexpr PanelRow kInvertMaskRows[] = {ColourRow("Red", "Green", "Blue", "IDS_COMMON_COLOR"),
                                        SliderRow("Transparency", "IDS_INVERTMASK_TRANS")};

constexpr PanelField kImgBgFields[] = {{"Red", "Red=%.3d", FieldKind::Integer, 180},
                                       {"Green", ",Green=%.3d", FieldKind::Integer, 180},
                                       {"Blue", ",Blue=%.3d", FieldKind::Integer, 180},
                                       {"Transparency", ",Transparency=%.3d"}};
constexpr PanelRow kImgBgRows[] = {ColourRow("Red", "Green", "Blue", "IDS_COMMON_COLOR"),
                                   SliderRow("Transparency", "IDS_IMGBG_TRANS")};

constexpr DialogClass kDialogs[] = {
    {.className = "CSepiaDialog",
     .progId = "ZNFilter.Sepia.1",
     .headerKey = "IDS_SEPIA_HEADER",
     .helpKey = "HLP_SEPIA",
     .defaultText = "Sepia=000",
     .fields = kSepiaFields,
     .rows = kSepiaRows},
    {.className = "CInvertDialog",
     .progId = "ZNFilter.Invert.1",
     .headerKey = "IDS_INVERT_HEADER",
     .helpKey = "HLP_INVERT",
     .defaultText = "Inversity=000",
     .fields = kInvertFields,
     .rows = kInvertRows},
    {.className = "CBlackWhiteDialog",
     .progId = "ZNFilter.BlackWhiteness.1",
     .headerKey = "IDS_BLACKWHITE_HEADER",
     .helpKey = "HLP_BLACKWHITE",
     .defaultText = "BlackWhiteNess=100",
     .fields = kBlackWhiteFields,
     .rows = kBlackWhiteRows},
    {.className = "CTransDialog",
     .progId = "ZNFilter.Transparency.1",
     .headerKey = "IDS_TRANS_HEADER",
     .helpKey = "HLP_TRANS",
     .defaultText = "Transparency=000",
     .fields = kTransFields,
     .rows = kTransRows},
    {.className = "CColorDialog",
     .progId = "ZNFilter.RGBColor.1",
     .headerKey = "IDS_COLOR_HEADER",
     .helpKey = "HLP_COLOR",
     .defaultText = "Red=000,Green=000,Blue=000",
     .fields = kColourFields,
     .rows = kColourRows},
    {.className = "CAdoptColorDialog",
     .progId = "ZNFilter.AdoptColor.1",
     .headerKey = "IDS_ADOPTCOLOR_HEADER",
     .helpKey = "HLP_COLORIZE",
     .defaultText = "ColorRed=000,ColorGreen=000,ColorBlue=000,Intensity=100",
     .fields = kAdoptFields,
     .rows = kAdoptRows,
     .endsMeasurement = true},
    {.className = "CDuoColorDialog",
     .progId = "ZNFilter.DuoColor.1",
     .headerKey = "IDS_DUOCOLOR_HEADER",
     .helpKey = "HLP_DUOCOLORIZE",
     .defaultText = "ColorRed=000,ColorGreen=000,ColorBlue=000,Red2=255,Green2=255,Blue2=255,"
                    "Intensity=100",
     .fields = kDuoFields,
     .rows = kDuoRows},
    {.className = "CInvertMaskDialog",
     .progId = "ZNFilter.InvertMask.1",
     .headerKey = "IDS_INVERTMASK_HEADER",
     .helpKey = "HLP_INVERTMASK",
     .defaultText = "Red=255,Green=255,Blue=255,Transparency=000",
     .fields = kInvertMaskFields,
     .rows = kInvertMaskRows},
    {.className = "CImgBgDialog",
     .progId = "ZNFilter.ImgBg.1",
     .headerKey = "IDS_IMGBG_HEADER",
     .helpKey = "HLP_IMGBG",
     .defaultText = "Red=180,Green=180,Blue=180,Transparency=000",
     .fields = kImgBgFields,
     .rows = kImgBgRows}};

}  // namespace

std::span<const DialogClass> ColourDialogs() {
  return kDialogs;
}

}  // namespace dialogs
