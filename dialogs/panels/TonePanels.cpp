// Dialogs of brightness, contrast and tone.
#include "dialogs/GradationDialog.h"
#include "dialogs/WhiteBlackGreyDialog.h"
#include "dialogs/panels/Panels.h"

namespace dialogs {
namespace {

constexpr PanelField kExposureFields[] = {
    {"Red", "Red=%.3d"}, {"Green", ",Green=%.3d"}, {"Blue", ",Blue=%.3d"}};
constexpr PanelRow kExposureRows[] = {SliderRow("Red", "IDS_COLOR_RED", -100),
                                      SliderRow("Green", "IDS_COLOR_GREEN", -100),
                                      SliderRow("Blue", "IDS_COLOR_BLUE", -100)};

constexpr PanelField kHundKFields[] = {{"Brightness", "Brightness=%.3d"},
                                       {"Contrast", ",Contrast=%.3d"},
                                       {"Saturation", ",Saturation=%.3d"}};
constexpr PanelRow kHundKRows[] = {SliderRow("Brightness", "IDS_COMMON_BRIGHTNESS", -100),
                                   SliderRow("Contrast", "IDS_COMMON_CONTRAST", -100),
                                   SliderRow("Saturation", "IDS_COMMON_SATURATION", -100)};

constexpr PanelField kOptimizeFields[] = {{"Slider1", "Slider1=%.3d"},
                                          {"Slider2", ",Slider2=%.3d"},
                                          {"Slider3", ",Slider3=%.3d"},
                                          {"Slider4", ",Slider4=%.3d"}};
constexpr PanelRow kOptimizeRows[] = {
    SliderRow("Slider1", "IDS_OPT_BRIGHTNESS", -100), SliderRow("Slider2", "IDS_OPT_LIGHTS", -100),
    SliderRow("Slider3", "IDS_OPT_SHADOWS", -100), SliderRow("Slider4", "IDS_OPT_COLORS", -100)};

constexpr PanelField kHistoFields[] = {{"Intensity", "Intensity=%.3d"}};
constexpr PanelRow kHistoRows[] = {SliderRow("Intensity", "IDS_POWER")};

constexpr PanelField kTonwertFields[] = {
    {"AutoTone", "AutoTone=%.1d", FieldKind::Flag},
    {"AutoContrast", ",AutoContrast=%.1d", FieldKind::Flag, 1},
    {"AutoContrastRGB", ",AutoContrastRGB=%.1d", FieldKind::Flag},
    {"Hi", ",Hi=%.3d"},
    {"Med", ",Med=%.3d"},
    {"Lo", ",Lo=%.3d"},
    {"Addhi", ",Addhi=%.3d"},
    {"Addmed", ",Addmed=%.3d"},
    {"Addlo", ",Addlo=%.3d"}};
constexpr PanelRow kTonwertRows[] = {
    CheckRow("AutoTone", "IDS_TONWERT_AUTOTON"),
    CheckRow("AutoContrast", "IDS_TONWERT_AUTOCON"),
    EnabledWhen(CheckRow("AutoContrastRGB", "IDS_TONWERT_AUTOCON_RGB"), "AutoContrast"),
    ShownWhen(SliderRow("Hi", "IDS_TONWERT_HI"), 0, "AutoContrast", 0),
    ShownWhen(SliderRow("Addhi", "IDS_TONWERT_HI", -100), 0, "AutoContrast", 1),
    ShownWhen(SliderRow("Med", "IDS_TONWERT_MED", -100), 1, "AutoTone", 0),
    ShownWhen(SliderRow("Addmed", "IDS_TONWERT_ADDMED", -100), 1, "AutoTone", 1),
    ShownWhen(SliderRow("Lo", "IDS_TONWERT_LO"), 2, "AutoContrast", 0),
    ShownWhen(SliderRow("Addlo", "IDS_TONWERT_LO", -100), 2, "AutoContrast", 1)};

constexpr PanelField kGreyFields[] = {{"RedG", "RedG=%.3d", FieldKind::Integer, 255},
                                      {"GreenG", ", GreenG=%.3d", FieldKind::Integer, 255},
                                      {"BlueG", ", BlueG=%.3d", FieldKind::Integer, 255},
                                      {"Mode", ", Mode=%d"},
                                      {"Opacity", ", Opacity=%.3d", FieldKind::Integer, 100},
                                      {"FilterOn", ", FilterOn=%.1d", FieldKind::Flag, 1}};
constexpr const char* kGreyModes[] = {
    "IDS_WHITEBLACKGREY_MODELINEAR", "IDS_WHITEBLACKGREY_MODECURVES",
    "IDS_WHITEBLACKGREY_MODECURVES_AUTOCONTRAST", "IDS_WHITEBLACKGREY_MODECURVES_AUTOTONE"};
constexpr PanelRow kGreyRows[] = {ColourRow("RedG", "GreenG", "BlueG", "IDS_WHITEBLACKGREY_POINT"),
                                  ChoiceRow("Mode", "IDS_WHITEBLACKGREY_MODE", kGreyModes),
                                  SliderRow("Opacity", "IDS_COMMON_OPACITY")};

std::vector<DialogClass> MakeMeasuringDialogs() {
  return {{.className = "CTonwertDialog",
           .progId = "ZNFilter.Tonwert.1",
           .headerKey = "IDS_TONWERT_HEADER",
           .helpKey = "HLP_TONWERT",
           .defaultText = "AutoTone=0,AutoContrast=1,AutoContrastRGB=0,Hi=0,Med=0,Lo=0,Addhi=0,"
                          "Addmed=0,Addlo=0",
           .fields = kTonwertFields,
           .rows = kTonwertRows,
           .endsMeasurement = true},
          {.className = "CWhiteBlackGreyDialog",
           .progId = "ZNFilter.WhiteBlackGrey.1",
           .headerKey = "IDS_WHITEBLACKGREY_HEADER",
           .helpKey = "HLP_WHITEBLACKGREY",
           .defaultText = "RedG=255, GreenG=255, BlueG=255, Mode=0, Opacity=100, FilterOn=1",
           .fields = kGreyFields,
           .rows = kGreyRows,
           .make = &NewWhiteBlackGreyDialog},
          {.className = "CGradCurvesDialog",
           .progId = "ZNFilter.GradCurves.1",
           .headerKey = "IDS_GRADCURVES_HEADER",
           .helpKey = "HLP_GRADATION",
           .defaultText = GradationDefaultText(),
           .fields = GradationFields(),
           .rows = GradationRows(),
           .make = &NewGradationDialog}};
}

std::vector<DialogClass> MakeToneDialogs() {
  return {{.className = "CHundKDialog",
           .progId = "ZNFilter.BrightnessContrast.1",
           .headerKey = "IDS_HUNDK_HEADER",
           .helpKey = "HLP_IMAGE_ENHANCEMENT",
           .defaultText = "Brightness=000,Contrast=000,Saturation=000",
           .fields = kHundKFields,
           .rows = kHundKRows},
          {.className = "COptimizeDialog",
           .progId = "ZNFilter.Optimize.1",
           .headerKey = "IDS_OPT_HEADER",
           .helpKey = "HLP_OPT",
           .defaultText = "Slider1=000,Slider2=000,Slider3=000,Slider4=000",
           .fields = kOptimizeFields,
           .rows = kOptimizeRows},
          {.className = "CExposureDialog",
           .progId = "ZNFilter.Exposure.1",
           .headerKey = "IDS_EXPOSURE_HEADER",
           .helpKey = "HLP_EXPOSURECORRECTION",
           .defaultText = "Red=000,Green=000,Blue=000",
           .fields = kExposureFields,
           .rows = kExposureRows},
          {.className = "CHistoDialog",
           .progId = "ZNFilter.Histo.1",
           .headerKey = "IDS_HISTO_HEADER",
           .helpKey = "HLP_HISTO",
           .defaultText = "Intensity=000",
           .fields = kHistoFields,
           .rows = kHistoRows},
          {.className = "CExposure2Dialog",
           .progId = "ZNFilter.Exposure2.1",
           .headerKey = "IDS_EXPOSURE2_HEADER",
           .helpKey = "HLP_EXPOSURE2",
           .defaultText = "Red=000,Green=000,Blue=000",
           .fields = kExposureFields,
           .rows = kExposureRows}};
}

}  // namespace

std::span<const DialogClass> MeasuringDialogs() {
  static const std::vector<DialogClass> rows = MakeMeasuringDialogs();
  return rows;
}

std::span<const DialogClass> ToneDialogs() {
  static const std::vector<DialogClass> rows = MakeToneDialogs();
  return rows;
}

}  // namespace dialogs
