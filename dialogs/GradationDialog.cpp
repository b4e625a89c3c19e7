#include "dialogs/GradationDialog.h"

#include <algorithm>
#include <deque>
#include <string>
#include <vector>

#include "base/CodePage.h"
#include "core/PresetFiles.h"
#include "dialogs/PanelDialog.h"
#include "dialogs/panels/Panels.h"
#include "editing/GradationPreset.h"
#include "toolkit/ZNCurveEditor.h"
#include "toolkit/ZNMessage.h"

namespace dialogs {
namespace {

constexpr int kCurves = GradCurvesParameters::kCurves;
constexpr int kNodes = GradCurvesParameters::kNodes;
constexpr char kLetters[] = "LRGB";

std::string Key(char axis, int curve, int node) {
  return std::string(1, axis) + kLetters[curve] + std::to_string(node);
}
std::string CountKey(int curve) {
  return std::string("n") + kLetters[curve];
}

struct Fields {
  std::deque<std::string> texts;
  std::vector<PanelField> rows;
  std::string defaultText;

  void Add(const std::string& key, const char* defaultForm, int start) {
    texts.push_back(key);
    const char* const kept = texts.back().c_str();
    texts.push_back(key + "=%d, ");
    rows.push_back({kept, texts.back().c_str(), FieldKind::Integer, double(start)});
    char number[20];
    std::snprintf(number, sizeof number, defaultForm[2] == '2' ? "%.2d" : "%.3d", start);
    defaultText += key + "=" + number + ", ";
  }
};

const Fields& AllFields() {
  static const Fields all = [] {
    Fields fields;
    for (int curve = 0; curve < kCurves; ++curve) fields.Add(CountKey(curve), "%.2d", 2);
    for (const char axis : {'x', 'y'}) {
      for (int curve = 0; curve < kCurves; ++curve) {
        for (int node = 1; node <= kNodes; ++node) {
          fields.Add(Key(axis, curve, node), "%.3d", node == 1 ? 0 : 255);
        }
      }
    }
    fields.rows.push_back({"Linear", "Linear=%d,", FieldKind::Flag});
    fields.rows.push_back({"YIQOn", "YIQOn=%d,FilterOn=1,", FieldKind::Flag});
    for (const char* view : {"Channel", "Percent", "OnlyActive"}) fields.rows.push_back({view});
    fields.rows.push_back({"Grid", nullptr, FieldKind::Flag, 1});
    fields.defaultText.resize(fields.defaultText.size() - 2);  // the last separator
    return fields;
  }();
  return all;
}

constexpr const char* kChannels[] = {"IDS_GRADCURVES_LUMINANCE", "IDS_COLOR_RED", "IDS_COLOR_GREEN",
                                     "IDS_COLOR_BLUE"};

constexpr PanelRow CurveRow() {
  PanelRow row;
  row.control = RowControl::Canvas;
  row.canvas = {270, 270};
  return row;
}

constexpr PanelRow kRows[] = {ChoiceRow("Channel", "IDS_COMMON_CHANNEL", kChannels),
                              CurveRow(),
                              CheckRow("Linear", "IDS_GRADCURVES_LINEAR"),
                              CheckRow("YIQOn", "IDS_GRADCURVES_YIQ"),
                              CheckRow("Grid", "IDS_GRADCURVES_GRID"),
                              CheckRow("Percent", "IDS_GRADCURVES_PERCENT"),
                              CheckRow("OnlyActive", "IDS_GRADCURVES_ONLYACTIVE")};

int CountOf(const PanelValues& values, int curve) {
  const auto count = static_cast<int>(values.Number(CountKey(curve).c_str()));
  return std::clamp(count, 2, kNodes);
}

std::vector<editing::CurveNode> NodesOf(const PanelValues& values, int curve) {
  std::vector<editing::CurveNode> nodes;
  for (int node = 1; node <= CountOf(values, curve); ++node) {
    const auto part = [&](char axis) {
      const double number = values.Number(Key(axis, curve, node).c_str());
      return static_cast<std::int32_t>(std::clamp(number, 0.0, 255.0));
    };
    nodes.push_back({part('x'), part('y')});
  }
  return nodes;
}

// Behind the last node all stand at 255.
void StoreNodes(PanelValues& values, int curve, std::span<const editing::CurveNode> nodes) {
  values.SetNumber(CountKey(curve).c_str(), static_cast<double>(nodes.size()));
  for (int node = 1; node <= kNodes; ++node) {
    const auto i = static_cast<std::size_t>(node) - 1;
    const bool isThere = i < nodes.size();
    values.SetNumber(Key('x', curve, node).c_str(), isThere ? nodes[i].x : 255);
    values.SetNumber(Key('y', curve, node).c_str(), isThere ? nodes[i].y : 255);
  }
}

int ChannelOf(const PanelValues& values) {
  return std::clamp(static_cast<int>(values.Number("Channel")), 0, kCurves - 1);
}

using Sample = std::vector<std::uint8_t>;

// The byte of a pixel (blue, green, red) that a curve works on.
int LevelOf(const std::uint8_t* pixel, int curve) {
  if (curve == 0) return (77 * pixel[2] + 151 * pixel[1] + 28 * pixel[0]) >> 8;
  return pixel[kCurves - 1 - curve];
}

CZNCurveEditor::Histogram HistogramOf(const Sample& sample, int curve) {
  CZNCurveEditor::Histogram counts = {};
  for (std::size_t i = 0; i + 2 < sample.size(); i += 3) {
    ++counts[static_cast<std::size_t>(LevelOf(&sample[i], curve))];
  }
  return counts;
}

// The curve of the channel on show, over what the picture has in it.
class CurveCanvas final : public CZNCurveEditor {
 public:
  CurveCanvas(CZNDialog& dialog, const std::string& name, std::function<Sample()> readSample)
      : CZNCurveEditor(dialog, name, kNodes) {
    onHistogram = [this, read = std::move(readSample)] { return HistogramOf(read(), channel); };
  }

  void Show(const PanelValues& values) override {
    channel = ChannelOf(values);
    const bool linear = values.Number("Linear") != 0;
    std::vector<RCNodeCurve> others;
    for (int other = 0; other < kCurves && values.Number("OnlyActive") == 0; ++other) {
      if (other == channel) continue;
      others.emplace_back().nodes = NodesOf(values, other);
      others.back().linear = linear;
    }
    SetBehind(others);
    SetGrid(values.Number("Grid") != 0);
    SetPercent(values.Number("Percent") != 0);
    SetCurve(NodesOf(values, channel), linear);
  }
  void Store(PanelValues& values) const override { StoreNodes(values, channel, Curve().nodes); }

 private:
  int channel = 0;
};

class CDlgGradation final : public CDlgPanel {
 public:
  CDlgGradation(CPdibFilterDialog* dialog, const DialogClass& dialogClass,
                std::function<Sample()> sample)
      : CDlgPanel(dialog, dialogClass), readSample(std::move(sample)) {}

 private:
  CZNPanelCanvas* MakeCanvas(const PanelRow&) override {
    return editor = &Make<CurveCanvas>(Words("IDS_GRADCURVES_CURVE"), readSample);
  }

  void BuildMore() override {
    AddButton("IDS_GRADCURVES_ADD", [this] { editor->AddNode(); });
    AddButton("IDS_GRADCURVES_THIN", [this] { editor->ThinOut(); });
    AddButton("IDS_GRADCURVES_SAVE", [this] { Save(); });
    AddButton("IDS_GRADCURVES_DELETE", [this] { Delete(); });
    captionText = Words("IDS_GRADCURVES_PRESET");
    caption = &Make<CZNStatic>(captionText);
    presets = &Make<CZNComboBox>(captionText, std::vector<std::string>());
    presets->onChange = [this] { Load(); };
    FillPresets("");
  }

  void AddButton(const char* key, std::function<void()> action) {
    buttonTexts.push_back(Words(key));
    buttons.push_back(&Make<CZNButton>(buttonTexts.back()));
    buttons.back()->onPress = std::move(action);
  }

  toolkit::Size PlaceMore(toolkit::Point origin, int width) override {
    const int gap = System().Scaled(8);
    const toolkit::Size text = caption->Preferred(captionText);
    const int boxHeight = presets->Preferred("").height;
    caption->Place({origin.x, origin.y + (boxHeight - text.height) / 2, text.width, text.height});
    presets->Place({origin.x + text.width + gap, origin.y,
                    std::max(System().Scaled(120), width - text.width - gap), boxHeight});
    int x = origin.x, y = origin.y + boxHeight + gap, widest = width;
    for (std::size_t i = 0; i < buttons.size(); ++i) {
      const toolkit::Size size = buttons[i]->Preferred(buttonTexts[i]);
      if (i == 2) {
        x = origin.x;
        y += size.height + gap;
      }
      buttons[i]->Place({x, y, size.width, size.height});
      x += size.width + gap;
      widest = std::max(widest, x - gap - origin.x);
    }
    return {widest, y + buttons[0]->Where().height - origin.y};
  }

  // --- presets

  using Path = std::filesystem::path;

  // Those of the user first.
  void FillPresets(const std::string& chosen) {
    folders = core::FindPresetFolders("Gradation");
    files.clear();
    std::vector<std::string> names;
    for (const Path* folder :
         {folders ? &folders->user : nullptr, folders ? &folders->factory : nullptr}) {
      if (!folder) continue;
      for (const Path& name : core::ListPresets(*folder)) {
        const auto utf8 = name.u8string();
        names.emplace_back(utf8.begin(), utf8.end());
        files.push_back(core::PresetFile(*folder, std::string(utf8.begin(), utf8.end())));
      }
    }
    presets->SetItems(names);
    const auto found = std::find(names.begin(), names.end(), chosen);
    presets->Choose(found == names.end() ? -1 : static_cast<int>(found - names.begin()));
  }

  void Load() {
    const int chosen = presets->Chosen();
    if (chosen < 0) return;
    const Path file = files[static_cast<std::size_t>(chosen)];
    const auto text = core::ReadPresetText(file);
    std::string error = "?";
    const auto preset = text ? ReadGradationPreset(*text, error) : std::nullopt;
    if (!preset) {
      ZNAskButton(Words("IDS_GRADCURVES_PRESET"), error, {Words("COMMON_OK")}, Handle());
      return;
    }
    if (preset->version == 1) Convert(file, *preset);
    Change([&](PanelValues& changed) { TakePreset(*preset, changed); });
  }

  static void TakePreset(const GradationPreset& preset, PanelValues& changed) {
    for (int curve = 0; curve < kCurves; ++curve) {
      const auto& from = preset.curves.curves[curve];
      const int count = std::clamp(from.count, 2, kNodes);
      StoreNodes(changed, curve, {from.nodes, static_cast<std::size_t>(count)});
    }
    changed.SetNumber("Linear", preset.curves.linear);
    changed.SetNumber("YIQOn", preset.curves.yiqOn);
    changed.SetNumber("Channel", preset.channel);
    changed.SetNumber("Percent", preset.percent);
    changed.SetNumber("Grid", preset.grid);
    changed.SetNumber("OnlyActive", preset.onlyActive);
  }

  GradationPreset AsPreset() const {
    GradationPreset preset;
    for (int curve = 0; curve < kCurves; ++curve) {
      auto& to = preset.curves.curves[curve];
      const auto nodes = NodesOf(values, curve);
      to.count = static_cast<std::int32_t>(nodes.size());
      std::copy(nodes.begin(), nodes.end(), to.nodes);
    }
    preset.curves.linear = values.Number("Linear") != 0;
    preset.curves.yiqOn = values.Number("YIQOn") != 0;
    preset.curves.filterOn = true;
    preset.channel = ChannelOf(values);
    preset.selected[preset.channel] = editor->Curve().current + 1;
    preset.percent = values.Number("Percent") != 0;
    preset.grid = values.Number("Grid") != 0;
    preset.onlyActive = values.Number("OnlyActive") != 0;
    return preset;
  }

  void Convert(const Path& file, const GradationPreset& preset) {
    const int answer = ZNAskButton(Words("IDS_GRADCURVES_PRESET"), "OK to convert to Version 2?",
                                   {Words("COMMON_YES"), Words("COMMON_NO")}, Handle());
    if (answer == 0) Write(file, preset);
  }

  bool Write(const Path& file, const GradationPreset& preset) {
    const auto error = core::WritePresetText(file, PrintGradationPreset(preset));
    if (error) ZNAskButton(Words("IDS_GRADCURVES_SAVE"), *error, {Words("COMMON_OK")}, Handle());
    return !error;
  }

  bool Confirms(const char* key, const char* headKey) {
    return ZNAskButton(Words(headKey), Words(key), {Words("COMMON_YES"), Words("COMMON_NO")},
                       Handle()) == 0;
  }

  void Save() {
    if (!folders) return;
    const auto name = ZNAskText(Words("IDS_GRADCURVES_SAVE"), Words("IDS_GRADCURVES_SETNAME"), "",
                                Words("COMMON_OK"), Words("COMMON_CANCEL"), Handle());
    if (!name) return;
    if (!core::IsPresetName(*name)) {
      ZNAskButton(Words("IDS_GRADCURVES_DISALLOWEDCHARS_HEAD"),
                  Words("IDS_GRADCURVES_DISALLOWEDCHARS"), {Words("COMMON_OK")}, Handle());
      return;
    }
    std::error_code ignored;
    const Path file = core::PresetFile(folders->user, *name);
    const char* question = nullptr;
    if (std::filesystem::exists(file, ignored)) question = "IDS_GRADCURVES_SET_OVERWRITE_USER";
    if (std::filesystem::exists(core::PresetFile(folders->factory, *name), ignored)) {
      question = "IDS_GRADCURVES_SET_OVERWRITE_FACTORY";
    }
    if (question && !Confirms(question, "IDS_GRADCURVES_SAVE")) return;
    std::filesystem::create_directories(folders->user, ignored);
    if (Write(file, AsPreset())) FillPresets(*name);
  }

  // Only the user's own can go.
  void Delete() {
    const int chosen = presets->Chosen();
    if (chosen < 0 || !folders) return;
    const Path file = files[static_cast<std::size_t>(chosen)];
    if (file.parent_path() != folders->user) return;
    if (!Confirms("IDS_GRADCURVES_DELETE_PRESET", "IDS_GRADCURVES_DELETE_PRESET_HEAD")) return;
    std::error_code ignored;
    std::filesystem::remove(file, ignored);
    FillPresets("");
  }

  std::function<Sample()> readSample;
  CurveCanvas* editor = nullptr;
  CZNStatic* caption = nullptr;
  CZNComboBox* presets = nullptr;
  std::string captionText;
  std::vector<std::string> buttonTexts;
  std::vector<CZNButton*> buttons;
  std::optional<core::PresetFolders> folders;
  std::vector<Path> files;  // of the presets in the box
};

class CGradCurvesDialog final : public CPanelDialog {
 public:
  using CPanelDialog::CPanelDialog;

 private:
  std::unique_ptr<CDlgFilterBase> NewWindow() override {
    return std::make_unique<CDlgGradation>(this, Class(), [this] { return ReadSample(); });
  }
};

}  // namespace

CPdibFilterDialog* NewGradationDialog(const DialogClass& row) {
  return new CGradCurvesDialog(row);
}

std::span<const PanelField> GradationFields() {
  return AllFields().rows;
}

std::span<const PanelRow> GradationRows() {
  return kRows;
}

const char* GradationDefaultText() {
  return AllFields().defaultText.c_str();
}

}  // namespace dialogs
