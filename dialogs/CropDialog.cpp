#include "dialogs/CropDialog.h"

#include <cstring>
#include <numbers>

#include "core/Parameter.h"
#include "dialogs/DialogText.h"
#include "dialogs/PanelDialog.h"
#include "dialogs/panels/Panels.h"
#include "toolkit/ZNCropView.h"

namespace dialogs {
namespace {

constexpr FieldKind kReal = FieldKind::PointReal;

#define CROP_FIELDS                                                                              \
  {"LeftMargin", "LeftMargin=%2.4lf", kReal}, {"RightMargin", ", RightMargin=%2.4lf", kReal, 1}, \
      {"BottomMargin", ", BottomMargin=%2.4lf", kReal},                                          \
      {"TopMargin", ", TopMargin=%2.4lf", kReal, 1},                                             \
      {"ShrinkAlpha", ", ShrinkAlpha=%.1d", FieldKind::Flag},                                    \
      {"FixRatioOn", ", FixRatioOn=%.1d", FieldKind::Flag, 1},                                   \
      {"FixRatio", ", FixRatio=%2.4lf", kReal, -1},                                              \
      {"Landscape", ", Landscape=%.1d", FieldKind::Flag},                                        \
      {"AdjustOri", ", AdjustOri=%d", FieldKind::Integer, -1}, {"DlgSizeX", ", DlgSizeX=%d"}, {  \
    "DlgSizeY", ", DlgSizeY=%d"                                                                  \
  }

constexpr PanelField kCropFields[] = {CROP_FIELDS};
constexpr PanelField kRotCropFields[] = {CROP_FIELDS,
                                         {"Mirrored", ", Mirrored=%.1d", FieldKind::Flag},
                                         {"Angle", ", Angle=%4.4lf", kReal},
                                         {"Rot1X", ",Rot1X=%1.5lf", kReal, 0.25},
                                         {"Rot1Y", ",Rot1Y=%1.5lf", kReal, 0.5},
                                         {"Rot2X", ", Rot2X=%1.5lf", kReal, 0.75},
                                         {"Rot2Y", ", Rot2Y=%1.5lf", kReal, 0.5}};
#undef CROP_FIELDS

constexpr PanelField kPrintCropFields[] = {{"MarginL", "MarginL=%.4lf", kReal},
                                           {"MarginR", ", MarginR=%.4lf", kReal, 1},
                                           {"MarginB", ", MarginB=%.4lf", kReal},
                                           {"MarginT", ", MarginT=%.4lf", kReal, 1},
                                           {"Width", ", Width=%.4lf", kReal, 15},
                                           {"Height", ", Height=%.4lf", kReal, 10},
                                           {"Measur", ", Measur=%d", FieldKind::Integer, 1},
                                           {"PPI", ", PPI=%.4lf", kReal, 100},
                                           {"FixedPPI", ", FixedPPI=%d", FieldKind::Flag}};

constexpr PanelRow ViewRow(std::array<const char*, 4> keys) {
  PanelRow row;
  row.control = RowControl::Canvas;
  row.keys = keys;
  row.canvas = {300, 190};
  return row;
}

// Shares of the picture, shown in percent.
constexpr PanelRow ShareRow(const char* key, const char* caption) {
  PanelRow row = RealSliderRow(key, caption, 0, 100, 0.01, 2);
  row.shownFactor = 100;
  return row;
}

// -1 is no ratio of its own: the two sides count.
constexpr PanelRow RatioRow() {
  PanelRow row = NumberRow("FixRatio", "IDS_CROP_RATIO", -1, 10000);
  row.range = {-1, 10000, 0.0001, 4};
  return EnabledWhen(row, "FixRatioOn");
}

constexpr std::array<const char*, 4> kCropKeys = {"LeftMargin", "RightMargin", "BottomMargin",
                                                  "TopMargin"};

#define CROP_ROWS                                                                             \
  ViewRow(kCropKeys), ShareRow("LeftMargin", "IDS_CROP_LEFT"),                                \
      ShareRow("RightMargin", "IDS_CROP_RIGHT"), ShareRow("BottomMargin", "IDS_CROP_BOTTOM"), \
      ShareRow("TopMargin", "IDS_CROP_TOP"),                                                  \
      InGroup(CheckRow("FixRatioOn", "IDS_CROP_FIXRATIO"), "IDS_CROP_RATIOS"),                \
      InGroup(RatioRow(), "IDS_CROP_RATIOS"),                                                 \
      InGroup(EnabledWhen(NumberRow("DlgSizeX", "IDS_CROP_SIZEX", 0, 100000), "FixRatioOn"),  \
              "IDS_CROP_RATIOS"),                                                             \
      InGroup(EnabledWhen(NumberRow("DlgSizeY", "IDS_CROP_SIZEY", 0, 100000), "FixRatioOn"),  \
              "IDS_CROP_RATIOS")

constexpr PanelRow RadiansRow() {
  PanelRow row = RealSliderRow("Angle", "IDS_COMMON_ANGLE", -180, 180, 0.01, 2);
  row.shownFactor = 180 / std::numbers::pi;
  return row;
}

constexpr PanelRow kCropRows[] = {CROP_ROWS};
constexpr PanelRow kRotCropRows[] = {
    CROP_ROWS, InGroup(RadiansRow(), "IDS_ROTCROP_TURN"),
    InGroup(CheckRow("Mirrored", "IDS_DREH_MIRROR"), "IDS_ROTCROP_TURN")};
#undef CROP_ROWS

constexpr const char* kMeasures[] = {"IDS_PRINTCROP_INCH", "IDS_PRINTCROP_CM"};
constexpr PanelRow PrintRow(const char* key, const char* caption, double greatest) {
  PanelRow row = NumberRow(key, caption, 0.1, greatest);
  row.range = {0.1, greatest, 0.1, 2};
  return row;
}
constexpr PanelRow kPrintCropRows[] = {
    ViewRow({"MarginL", "MarginR", "MarginB", "MarginT"}),
    ShareRow("MarginL", "IDS_CROP_LEFT"),
    ShareRow("MarginR", "IDS_CROP_RIGHT"),
    ShareRow("MarginB", "IDS_CROP_BOTTOM"),
    ShareRow("MarginT", "IDS_CROP_TOP"),
    InGroup(PrintRow("Width", "IDS_SCALE_H", 1000), "IDS_PRINTCROP_PAPER"),
    InGroup(PrintRow("Height", "IDS_SCALE_V", 1000), "IDS_PRINTCROP_PAPER"),
    InGroup(ChoiceRow("Measur", "IDS_PRINTCROP_MEASURE", kMeasures), "IDS_PRINTCROP_PAPER"),
    InGroup(CheckRow("FixedPPI", "IDS_PRINTCROP_FIXEDPPI"), "IDS_PRINTCROP_PAPER"),
    InGroup(EnabledWhen(PrintRow("PPI", "IDS_PRINTCROP_PPI", 10000), "FixedPPI"),
            "IDS_PRINTCROP_PAPER")};

class CDlgCrop final : public CDlgPanel {
 public:
  using CDlgPanel::CDlgPanel;

  void SetPictureSize(toolkit::Size size) {
    if (view) view->SetPictureSize(size);
  }

 private:
  CZNPanelCanvas* MakeCanvas(const PanelRow& canvasRow) override {
    return view = &Make<CZNCropView>(Words("IDS_CROP_VIEW"), canvasRow.keys);
  }

  // The ratio that the filter keeps to.
  void Complete(PanelValues& completed, const char*) override {
    double ratio = completed.Number("FixRatio");
    const double x = completed.Number("DlgSizeX"), y = completed.Number("DlgSizeY");
    if (ratio != -1 && x != 0 && y != 0) ratio = x / y;
    if (view) view->SetRatio(completed.Number("FixRatioOn") != 0 ? ratio : 0);
  }

  CZNCropView* view = nullptr;
};

class CCropDialog final : public CPanelDialog {
 public:
  using CPanelDialog::CPanelDialog;

 private:
  std::unique_ptr<CDlgFilterBase> NewWindow() override {
    return std::make_unique<CDlgCrop>(this, Class());
  }

  void OnNamedCall(const char* name, std::intptr_t text) override {
    if (std::strcmp(name, "PictureSize") != 0 || !text || !window) return;
    const Parameter size(reinterpret_cast<const char*>(text));
    static_cast<CDlgCrop*>(Panel())->SetPictureSize(
        {size.GetInt("Width", 0), size.GetInt("Height", 0)});
  }
};

}  // namespace

CPdibFilterDialog* NewCropDialog(const DialogClass& row) {
  return new CCropDialog(row);
}

std::span<const PanelField> CropFields() {
  return kCropFields;
}
std::span<const PanelRow> CropRows() {
  return kCropRows;
}
const char* CropDefaultText() {
  static const std::string text = PrintDialogText(PanelValues(kCropFields));
  return text.c_str();
}
std::span<const PanelField> RotCropFields() {
  return kRotCropFields;
}
std::span<const PanelRow> RotCropRows() {
  return kRotCropRows;
}
const char* RotCropDefaultText() {
  static const std::string text = PrintDialogText(PanelValues(kRotCropFields));
  return text.c_str();
}
std::span<const PanelField> PrintCropFields() {
  return kPrintCropFields;
}
std::span<const PanelRow> PrintCropRows() {
  return kPrintCropRows;
}
const char* PrintCropDefaultText() {
  static const std::string text = PrintDialogText(PanelValues(kPrintCropFields));
  return text.c_str();
}

}  // namespace dialogs
