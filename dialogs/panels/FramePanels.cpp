// Dialogs of frames, shadow and text.
#include "dialogs/panels/Panels.h"

namespace dialogs {
namespace {

// The mat and the glass pane have the same keys, in pixels and in percent.
constexpr PanelField kMatFields[] = {{"BordersizeOn", "BordersizeOn=%.1d", FieldKind::Flag, 1},
                                     {"Borderhori", ",Borderhori=%.3d", FieldKind::Integer, 1},
                                     {"Borderverti", ",Borderverti=%.3d", FieldKind::Integer, 1},
                                     {"TotalHori", ",TotalHori=%.3d", FieldKind::Integer, 150},
                                     {"TotalVerti", ",TotalVerti=%.3d", FieldKind::Integer, 150},
                                     {"Radius", ",Radius=%.3d", FieldKind::Integer, 5},
                                     {"Red", ",Red=%.3d"},
                                     {"Green", ",Green=%.3d"},
                                     {"Blue", ",Blue=%.3d", FieldKind::Integer, 105},
                                     {"Transparency", ",Transparency=%.3d"},
                                     {"Poscorhori", ",Poscorhori=%.3d"},
                                     {"Poscorverti", ",Poscorverti=%.3d"}};

// The value is that of `BordersizeOn`: 0 is the size of the whole.
constexpr const char* kMatModes[] = {"IDS_PASS_OBJECTSIZE", "IDS_PASS_BORDERSIZE"};

constexpr PanelRow MatModeRow() {
  PanelRow row = ChoiceRow("BordersizeOn", "", kMatModes);
  row.control = RowControl::Radio;
  return row;
}

constexpr PanelRow kPasspartoutRows[] = {
    MatModeRow(),
    ShownWhen(NumberRow("Borderhori", "IDS_SCALE_H", -1000, 1000), 0, "BordersizeOn", 1),
    ShownWhen(NumberRow("TotalHori", "IDS_SCALE_H", 1, 100000), 0, "BordersizeOn", 0),
    ShownWhen(NumberRow("Borderverti", "IDS_SCALE_V", -1000, 1000), 1, "BordersizeOn", 1),
    ShownWhen(NumberRow("TotalVerti", "IDS_SCALE_V", 1, 100000), 1, "BordersizeOn", 0),
    SliderRow("Radius", "IDS_PASS_RADIUS"),
    ColourRow("Red", "Green", "Blue", "IDS_COMMON_COLOR"),
    SliderRow("Transparency", "IDS_IMGBG_TRANS"),
    InGroup(NumberRow("Poscorhori", "IDS_PASS_HORZPOS", -10000, 10000), "IDS_PASS_POS"),
    InGroup(NumberRow("Poscorverti", "IDS_PASS_VERTPOS", -10000, 10000), "IDS_PASS_POS")};

constexpr PanelRow kRauchglasRows[] = {
    SliderRow("Borderhori", "IDS_SCALE_H"),
    SliderRow("Borderverti", "IDS_SCALE_V"),
    SliderRow("Radius", "IDS_SMOKY_BLUR"),
    ColourRow("Red", "Green", "Blue", "IDS_COMMON_COLOR"),
    SliderRow("Transparency", "IDS_IMGBG_TRANS"),
    InGroup(SliderRow("Poscorhori", "IDS_PASS_HORZPOS", -100), "IDS_PASS_POS"),
    InGroup(SliderRow("Poscorverti", "IDS_PASS_VERTPOS", -100), "IDS_PASS_POS")};

constexpr PanelField kShadowFields[] = {
    {"LightDirection", "LightDirection=%d", FieldKind::Integer, 1350},
    {"LightIntensity", ",LightIntensity=%d"},
    {"InnerOn", ",InnerOn=%d", FieldKind::Flag},
    {"ShadowDensity", ",ShadowDensity=%d"},
    {"ShadowBlur", ",ShadowBlur=%d", FieldKind::Integer, 20},
    {"Size", ",Size=%d"},
    {"ShadowDistance", ",ShadowDistance=%d", FieldKind::Integer, 3},
    {"ShadowRed", ",ShadowRed=%d"},
    {"ShadowGreen", ",ShadowGreen=%d"},
    {"ShadowBlue", ",ShadowBlue=%d"}};

constexpr PanelRow DirectionRow() {
  PanelRow row = SliderRow("LightDirection", "IDS_SCHATTEN_DIRECTION", 0, 360);
  row.control = RowControl::Angle;
  row.shownFactor = 0.1;
  row.range.step = 0.1;
  row.range.decimals = 1;
  return row;
}

constexpr PanelRow kShadowRows[] = {
    DirectionRow(),
    InGroup(SliderRow("LightIntensity", "IDS_POWER"), "IDS_SCHATTEN_LIGHT"),
    InGroup(SliderRow("ShadowDensity", "IDS_SCHATTEN_DENSITY"), "IDS_SCHATTEN_SHADOW"),
    InGroup(SliderRow("ShadowBlur", "IDS_SCHATTEN_BLUR"), "IDS_SCHATTEN_SHADOW"),
    InGroup(NumberRow("Size", "IDS_SCHATTEN_SIZE", 0, 255), "IDS_SCHATTEN_SHADOW"),
    InGroup(NumberRow("ShadowDistance", "IDS_SCHATTEN_DISTANCE", 0, 255), "IDS_SCHATTEN_SHADOW"),
    InGroup(ColourRow("ShadowRed", "ShadowGreen", "ShadowBlue", "IDS_COMMON_COLOR"),
            "IDS_SCHATTEN_SHADOW"),
    InGroup(CheckRow("InnerOn", "IDS_SCHATTEN_INNER"), "IDS_SCHATTEN_SHADOW")};

constexpr PanelField kSoftFrameFields[] = {{"SoftCorner", "SoftCorner=%.1d", FieldKind::Flag, 1},
                                           {"FrameWidth", ",FrameWidth=%.3d"},
                                           {"Links", ",Links=%.1d", FieldKind::Flag, 1},
                                           {"Oben", ",Oben=%.1d", FieldKind::Flag, 1},
                                           {"Rechts", ",Rechts=%.1d", FieldKind::Flag, 1},
                                           {"Unten", ",Unten=%.1d", FieldKind::Flag, 1}};
constexpr PanelRow kSoftFrameRows[] = {
    SliderRow("FrameWidth", "IDS_SOFTFRAME_WIDTH"),
    CheckRow("SoftCorner", "IDS_SOFTFRAME_CORNER"),
    InGroup(CheckRow("Links", "IDS_SOFTFRAME_LEFT"), "IDS_SOFTFRAME_SIDES"),
    InGroup(CheckRow("Oben", "IDS_SOFTFRAME_TOP"), "IDS_SOFTFRAME_SIDES"),
    InGroup(CheckRow("Rechts", "IDS_SOFTFRAME_RIGHT"), "IDS_SOFTFRAME_SIDES"),
    InGroup(CheckRow("Unten", "IDS_SOFTFRAME_BOTTOM"), "IDS_SOFTFRAME_SIDES")};

constexpr PanelField kTextFields[] = {{"Bold", "Bold=%.1d", FieldKind::Flag},
                                      {"Italic", ",Italic=%.1d", FieldKind::Flag},
                                      {"Size", ",Size=%.3d", FieldKind::Integer, 60},
                                      {"Red", ",Red=%.3d", FieldKind::Integer, 255},
                                      {"Green", ",Green=%.3d", FieldKind::Integer, 255},
                                      {"Blue", ",Blue=%.3d", FieldKind::Integer, 255},
                                      {"Opacity", ",Opacity=%.3d", FieldKind::Integer, 100},
                                      {"PosX", ",PosX=%.3d", FieldKind::Integer, 500},
                                      {"PosY", ",PosY=%.3d", FieldKind::Integer, 500},
                                      {"Align", ",Align=%.3d", FieldKind::Integer, 1},
                                      {"Angle", ",Angle=%.3d"},
                                      {"Outline", ",Outline=%.3d"},
                                      {"Red2", ",Red2=%.3d"},
                                      {"Green2", ",Green2=%.3d"},
                                      {"Blue2", ",Blue2=%.3d"},
                                      {"Font", ",Font=", FieldKind::Text},
                                      {"Text", ",Text=", FieldKind::Text}};
constexpr const char* kAlignments[] = {"IDS_TEXT_LEFT", "IDS_TEXT_CENTRE", "IDS_TEXT_RIGHT"};

constexpr PanelRow TextAngleRow() {
  PanelRow row = SliderRow("Angle", "IDS_COMMON_ANGLE", -180, 180);
  row.shownFactor = 0.1;
  row.range.step = 0.1;
  row.range.decimals = 1;
  return row;
}

// Thousandths are shown as percent.
constexpr PanelRow ThousandthsRow(const char* key, const char* caption, double least,
                                  double greatest) {
  PanelRow row = RealSliderRow(key, caption, least, greatest);
  row.shownFactor = 0.1;
  return row;
}

constexpr PanelRow kTextRows[] = {
    TextRow("Text", "IDS_TEXT_TEXT"),
    InGroup(TextRow("Font", "IDS_TEXT_FONT"), "IDS_TEXT_FONTGROUP"),
    InGroup(ThousandthsRow("Size", "IDS_TEXT_SIZE", 0.1, 100), "IDS_TEXT_FONTGROUP"),
    InGroup(CheckRow("Bold", "IDS_TEXT_BOLD"), "IDS_TEXT_FONTGROUP"),
    InGroup(CheckRow("Italic", "IDS_TEXT_ITALIC"), "IDS_TEXT_FONTGROUP"),
    InGroup(ColourRow("Red", "Green", "Blue", "IDS_COMMON_COLOR"), "IDS_TEXT_LOOK"),
    InGroup(SliderRow("Opacity", "IDS_COMMON_OPACITY"), "IDS_TEXT_LOOK"),
    InGroup(ThousandthsRow("Outline", "IDS_TEXT_OUTLINE", 0, 100), "IDS_TEXT_LOOK"),
    InGroup(ColourRow("Red2", "Green2", "Blue2", "IDS_TEXT_OUTLINE_COLOR"), "IDS_TEXT_LOOK"),
    InGroup(ThousandthsRow("PosX", "IDS_PASS_HORZPOS", 0, 100), "IDS_PASS_POS"),
    InGroup(ThousandthsRow("PosY", "IDS_PASS_VERTPOS", 0, 100), "IDS_PASS_POS"),
    InGroup(ChoiceRow("Align", "IDS_TEXT_ALIGN", kAlignments), "IDS_PASS_POS"),
    InGroup(TextAngleRow(), "IDS_PASS_POS")};

constexpr DialogClass kDialogs[] = {
    {.className = "CSchattenDialog",
     .progId = "ZNFilter.Shadow.1",
     .headerKey = "IDS_SCHATTEN_HEADER",
     .helpKey = "HLP_SCHATTEN",
     .defaultText = "LightDirection=1350,LightIntensity=0,InnerOn=0,ShadowDensity=0,ShadowBlur=20,"
                    "Size=0,ShadowDistance=3,ShadowRed=0,ShadowGreen=0,ShadowBlue=0",
     .fields = kShadowFields,
     .rows = kShadowRows},
    {.className = "CPasspartoutDialog",
     .progId = "ZNFilter.Passpartout.1",
     .headerKey = "IDS_PASS_HEADER",
     .helpKey = "HLP_PASSPARTOUT",
     .defaultText = "BordersizeOn=1,Borderhori=001,Borderverti=001,TotalHori=150,TotalVerti=150,"
                    "Radius=005,Red=000,Green=000,Blue=105,Transparency=000,Poscorhori=000,"
                    "Poscorverti=000",
     .fields = kMatFields,
     .rows = kPasspartoutRows},
    {.className = "CSoftFrameDialog",
     .progId = "ZNFilter.SoftFrame.1",
     .headerKey = "IDS_SOFTFRAME_HEADER",
     .helpKey = "HLP_SOFTFRAME",
     .defaultText = "SoftCorner=1,FrameWidth=0,Links=1,Oben=1,Rechts=1,Unten=1",
     .fields = kSoftFrameFields,
     .rows = kSoftFrameRows},
    {.className = "CTextDialog",
     .progId = "ZNFilter.Text.1",
     .headerKey = "IDS_TEXT_HEADER",
     .helpKey = "HLP_TEXT",
     .defaultText = "Bold=0,Italic=0,Size=060,Red=255,Green=255,Blue=255,Opacity=100,PosX=500,"
                    "PosY=500,Align=001,Angle=000,Outline=000,Red2=000,Green2=000,Blue2=000,Font=,"
                    "Text=",
     .fields = kTextFields,
     .rows = kTextRows},
    {.className = "CRauchglasDialog",
     .progId = "ZNFilter.Rauchglas.1",
     .headerKey = "IDS_SMOKY_HEADER",
     .helpKey = "HLP_SMOKEDGLASS",
     .defaultText = "BordersizeOn=1,Borderhori=75,Borderverti=75,TotalHori=150,TotalVerti=150,"
                    "Radius=5,Red=180,Green=180,Blue=180,Transparency=000,Poscorhori=000,"
                    "Poscorverti=000",
     .fields = kMatFields,
     .rows = kRauchglasRows}};

}  // namespace

std::span<const DialogClass> FrameDialogs() {
  return kDialogs;
}

}  // namespace dialogs
