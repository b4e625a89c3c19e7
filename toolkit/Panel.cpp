#include "toolkit/Panel.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>
#include <map>

#include "toolkit/ZNAngleDial.h"
#include "toolkit/ZNDialog.h"

namespace {

constexpr double kParts = 1e6;

// A line feed in a text is shown and typed as "\\n", a backslash as two.
std::string OneLine(const std::string& text) {
  std::string line;
  for (const char c : text) {
    line += c == '\n' ? "\\n" : c == '\\' ? "\\\\" : std::string(1, c);
  }
  return line;
}

std::string ManyLines(const std::string& line) {
  std::string text;
  for (std::size_t i = 0; i < line.size(); ++i) {
    const bool isEscape = line[i] == '\\' && i + 1 < line.size();
    if (isEscape) ++i;
    text += isEscape && line[i] == 'n' ? '\n' : line[i];
  }
  return text;
}

}  // namespace

// --- PanelValues

PanelValues::PanelValues(std::span<const PanelField> panelFields)
    : fields(panelFields), values(panelFields.size()) {
  for (std::size_t i = 0; i < fields.size(); ++i) values[i].number = fields[i].start;
}

std::size_t PanelValues::IndexOf(const char* key) const {
  std::size_t i = 0;
  while (i < fields.size() && (!key || std::strcmp(fields[i].key, key) != 0)) ++i;
  return i;
}

double PanelValues::Number(const char* key) const {
  const std::size_t i = IndexOf(key);
  return i < values.size() ? values[i].number : 0;
}

const std::string& PanelValues::Text(const char* key) const {
  static const std::string none;
  const std::size_t i = IndexOf(key);
  return i < values.size() ? values[i].text : none;
}

bool PanelValues::SetNumber(const char* key, double number) {
  const std::size_t i = IndexOf(key);
  if (i == values.size() || values[i].number == number) return false;
  values[i].number = number;
  return true;
}

bool PanelValues::SetText(const char* key, const std::string& text) {
  const std::size_t i = IndexOf(key);
  if (i == values.size() || values[i].text == text) return false;
  values[i].text = text;
  return true;
}

bool PanelValues::operator==(const PanelValues& other) const {
  return fields.data() == other.fields.data() && values == other.values;
}

// --- the rows' controls

struct CZNPanel::Row {
  const PanelRow* data = nullptr;
  CZNStatic* heading = nullptr;
  CZNStatic* caption = nullptr;
  CZNControl* main = nullptr;
  CZNNumberField* number = nullptr;
  std::unique_ptr<CZNRadioGroup> radio;
  std::string headingText, captionText, mainText;
  std::vector<std::string> texts;  // of the choices
  std::function<void()> show;

  template <class Action>
  void ForControls(Action action) {
    for (CZNControl* control :
         {static_cast<CZNControl*>(caption), main, static_cast<CZNControl*>(number)}) {
      if (control) action(*control);
    }
    for (std::size_t i = 0; radio && i < radio->Count(); ++i) action(radio->Button(i));
  }
};

CZNPanel::CZNPanel(CZNDialog& ofDialog, std::span<const PanelRow> panelRows,
                   PanelValues& panelValues, const Words& words, const CanvasMaker& makeCanvas)
    : dialog(ofDialog), values(panelValues) {
  for (const PanelRow& data : panelRows) AddRow(data, words, makeCanvas);
  ShowValues();
}

CZNPanel::~CZNPanel() = default;

void CZNPanel::AddRow(const PanelRow& data, const Words& words, const CanvasMaker& makeCanvas) {
  rows.push_back(std::make_unique<Row>());
  Row& row = *rows.back();
  row.data = &data;
  const char* const before = rows.size() > 1 ? rows[rows.size() - 2]->data->group : nullptr;
  if (data.group && (!before || std::strcmp(before, data.group) != 0)) {
    row.headingText = words(data.group);
    row.heading = &dialog.Make<CZNStatic>(row.headingText, true);
  }
  const std::string name = *data.caption ? words(data.caption) : std::string();
  if (data.control != RowControl::CheckBox) AddCaption(row, name);
  switch (data.control) {
    case RowControl::Slider:
      return AddSlider(row, name);
    case RowControl::Number:
      return AddNumber(row, name);
    case RowControl::CheckBox:
      return AddCheckBox(row, name);
    case RowControl::Radio:
    case RowControl::Choice:
      return AddChoices(row, name, words);
    case RowControl::Colour:
      return AddColour(row, name);
    case RowControl::Text:
      return AddText(row, name);
    case RowControl::Angle:
      return AddDial(row, name);
    case RowControl::Canvas:
      return AddCanvas(row, makeCanvas);
  }
}

// The first letter that no other caption of the panel has. Words that bring one keep it.
std::string CZNPanel::WithMnemonic(const std::string& text) {
  if (text.find('&') != std::string::npos) return text;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto letter = static_cast<unsigned char>(text[i]);
    if (letter >= 128 || !std::isalpha(letter)) continue;
    if (!mnemonics.insert(static_cast<char>(std::tolower(letter))).second) continue;
    return text.substr(0, i) + "&" + text.substr(i);
  }
  return text;
}

void CZNPanel::AddCaption(Row& row, const std::string& text) {
  if (text.empty()) return;
  row.captionText = WithMnemonic(text);
  row.caption = &dialog.Make<CZNStatic>(row.captionText);
}

void CZNPanel::AddNumber(Row& row, const std::string& name) {
  auto& number = dialog.Make<CZNNumberField>(name, row.data->range);
  row.number = &number;
  number.onChange = [this, &row, &number] { TakeNumber(row, number.Value()); };
  row.show = [this, &row, &number] { number.SetValue(Shown(row)); };
}

void CZNPanel::AddSlider(Row& row, const std::string& name) {
  auto& slider = dialog.Make<CZNSlider>(name, row.data->range, row.data->look);
  row.main = &slider;
  AddNumber(row, name);
  slider.onChange = [this, &row, &slider] { TakeNumber(row, slider.Value()); };
  row.show = [this, &row, &slider] {
    const double value = Shown(row);
    slider.SetValue(value);
    row.number->SetValue(value);
  };
}

void CZNPanel::AddDial(Row& row, const std::string& name) {
  auto& dial = dialog.Make<CZNAngleDial>(name, row.data->range, 360);
  row.main = &dial;
  AddNumber(row, name);
  dial.onChange = [this, &row, &dial] { TakeNumber(row, dial.Value()); };
  row.show = [this, &row, &dial] {
    const double value = Shown(row);
    dial.SetValue(value);
    row.number->SetValue(value);
  };
}

void CZNPanel::AddCheckBox(Row& row, const std::string& text) {
  row.mainText = WithMnemonic(text);
  auto& box = dialog.Make<CZNCheckBox>(row.mainText);
  row.main = &box;
  box.onChange = [this, &row, &box] { TakeNumber(row, box.IsChecked()); };
  row.show = [this, &row, &box] { box.SetChecked(values.Number(row.data->keys[0]) != 0); };
}

void CZNPanel::AddChoices(Row& row, const std::string& name, const Words& words) {
  for (const char* key : row.data->choices) row.texts.push_back(words(key));
  if (row.data->control == RowControl::Radio) {
    for (std::string& text : row.texts) text = WithMnemonic(text);
    row.radio = std::make_unique<CZNRadioGroup>(dialog, row.texts);
    row.radio->onChange = [this, &row] { TakeNumber(row, row.radio->Chosen()); };
    row.show = [this, &row] {
      row.radio->Choose(static_cast<int>(values.Number(row.data->keys[0])));
    };
    return;
  }
  auto& combo = dialog.Make<CZNComboBox>(name, row.texts);
  row.main = &combo;
  combo.onChange = [this, &row, &combo] { TakeNumber(row, combo.Chosen()); };
  row.show = [this, &row, &combo] {
    combo.Choose(static_cast<int>(values.Number(row.data->keys[0])));
  };
}

void CZNPanel::AddColour(Row& row, const std::string& name) {
  auto& button = dialog.Make<CZNColorButton>(name);
  row.main = &button;
  button.onChange = [this, &row, &button] {
    const auto& keys = row.data->keys;
    const bool changes[] = {values.SetNumber(keys[0], button.Value().red),
                            values.SetNumber(keys[1], button.Value().green),
                            values.SetNumber(keys[2], button.Value().blue)};
    if (changes[0] || changes[1] || changes[2]) Report(row);
  };
  row.show = [this, &row, &button] {
    const auto byte = [&](std::size_t i) {
      return static_cast<std::uint8_t>(std::clamp(values.Number(row.data->keys[i]), 0.0, 255.0));
    };
    button.SetValue({byte(0), byte(1), byte(2)});
  };
}

void CZNPanel::AddText(Row& row, const std::string& name) {
  auto& edit = dialog.Make<CZNEdit>(name);
  row.main = &edit;
  edit.onChange = [this, &row, &edit] {
    if (values.SetText(row.data->keys[0], ManyLines(edit.Text()))) Report(row);
  };
  row.show = [this, &row, &edit] {
    const std::string& text = values.Text(row.data->keys[0]);
    if (ManyLines(edit.Text()) != text) edit.SetEditText(OneLine(text));
  };
}

void CZNPanel::AddCanvas(Row& row, const CanvasMaker& makeCanvas) {
  CZNPanelCanvas* canvas = makeCanvas ? makeCanvas(*row.data) : nullptr;
  row.main = canvas;
  row.show = [this, canvas] {
    if (canvas) canvas->Show(values);
  };
  if (!canvas) return;
  canvas->onChange = [this, &row, canvas] {
    const PanelValues before = values;
    canvas->Store(values);
    if (!(before == values)) Report(row);
  };
}

// --- values and conditions

double CZNPanel::Shown(const Row& row) const {
  return values.Number(row.data->keys[0]) * row.data->shownFactor;
}

// Rounded, so that a tenth of a thousand is a hundred and not a hair less.
void CZNPanel::TakeNumber(Row& row, double shown) {
  const double number = std::round(shown / row.data->shownFactor * kParts) / kParts;
  if (values.SetNumber(row.data->keys[0], number)) Report(row);
}

void CZNPanel::Focus() {
  for (const auto& row : rows) {
    CZNControl* control = row->main ? row->main : row->number;
    if (row->radio) control = &row->radio->Button(0);
    if (!control || !control->IsVisible() || !control->IsEnabled()) continue;
    control->Focus();
    return;
  }
}

// Other rows may show the same value, and depend on it.
void CZNPanel::Report(Row& row) {
  ShowValues();
  if (onChange) onChange(row.data->keys[0]);
}

void CZNPanel::ShowValues() {
  for (const auto& row : rows) row->show();
  ApplyConditions();
}

bool CZNPanel::Holds(const RowCondition& condition) const {
  return !condition.key || (values.Number(condition.key) == condition.value) == condition.isEqual;
}

void CZNPanel::ApplyConditions() {
  for (const auto& row : rows) {
    const bool shown = Holds(row->data->shown);
    const bool enabled = Holds(row->data->enabled);
    row->ForControls([&](CZNControl& control) {
      control.SetVisible(shown);
      control.Enable(enabled);
    });
  }
}

// --- layout

// Three columns: captions, controls, numbers. What has no caption takes the first two.
class CZNPanel::Layouter {
 public:
  Layouter(toolkit::Backend& backend, std::vector<std::unique_ptr<Row>>& panelRows)
      : system(backend), rows(panelRows), gap(backend.Scaled(8)) {
    for (const auto& row : rows) Measure(*row);
  }

  toolkit::Size Place(toolkit::Point origin, int leastWidth) {
    left = origin.x;
    y = origin.y;
    width = std::max({leastWidth, wholeWidth, ColumnsWidth()});
    middle = width - (captions ? captions + gap : 0) - (numbers ? numbers + gap : 0);
    for (const auto& row : rows) PlaceRow(*row);
    return {width, std::max(0, y - origin.y - gap)};
  }

 private:
  using Size = toolkit::Size;
  using Kind = toolkit::ControlKind;

  int ColumnsWidth() const {
    return (captions ? captions + gap : 0) + controls + (numbers ? numbers + gap : 0);
  }

  Size Wanted(Kind kind, const std::string& text) const { return system.PreferredSize(kind, text); }

  // By the text itself: some systems make edits wide enough for a sentence.
  Size NumberSize(const Row& row) const {
    const ValueRange& range = row.data->range;
    const Size least = Wanted(Kind::Static, NumberText(range.least, range.decimals));
    const Size greatest = Wanted(Kind::Static, NumberText(range.greatest, range.decimals));
    const int digits = std::max(least.width, greatest.width) + system.Scaled(28);
    return {std::max(digits, system.Scaled(56)), Wanted(Kind::Edit, "0").height};
  }

  Size MainSize(const Row& row) const {
    switch (row.data->control) {
      case RowControl::Slider:
        return {std::max(Wanted(Kind::Slider, "").width, system.Scaled(200)),
                Wanted(Kind::Slider, "").height};
      case RowControl::CheckBox:
        return Wanted(Kind::CheckBox, row.mainText);
      case RowControl::Choice:
        return Widest(row, Kind::ComboBox);
      case RowControl::Radio: {
        const Size one = Widest(row, Kind::RadioButton);
        return {one.width, one.height * static_cast<int>(row.texts.size())};
      }
      case RowControl::Colour:
        return {system.Scaled(64), Wanted(Kind::ColourButton, "").height};
      case RowControl::Text:
        return {system.Scaled(200), Wanted(Kind::Edit, "").height};
      case RowControl::Angle:
        return {system.Scaled(96), system.Scaled(96)};
      case RowControl::Canvas:
        return {system.Scaled(row.data->canvas.width), system.Scaled(row.data->canvas.height)};
      case RowControl::Number:
        break;
    }
    return {};
  }

  Size Widest(const Row& row, Kind kind) const {
    Size widest;
    for (const std::string& text : row.texts) {
      const Size size = Wanted(kind, text);
      widest = {std::max(widest.width, size.width), std::max(widest.height, size.height)};
    }
    return widest;
  }

  bool IsWhole(const Row& row) const {
    return !row.caption &&
           (row.data->control == RowControl::CheckBox || row.data->control == RowControl::Canvas ||
            row.data->control == RowControl::Radio);
  }

  void Measure(const Row& row) {
    if (row.heading) {
      wholeWidth = std::max(wholeWidth, Wanted(Kind::Heading, row.headingText).width);
    }
    if (row.caption) captions = std::max(captions, Wanted(Kind::Static, row.captionText).width);
    if (row.number) numbers = std::max(numbers, NumberSize(row).width);
    int& column = IsWhole(row) ? wholeWidth : controls;
    column = std::max(column, MainSize(row).width);
  }

  void PlaceRow(Row& row) {
    if (row.data->slot >= 0) {
      const auto shared = slots.try_emplace(row.data->slot, y);
      if (!shared.second) return PlaceAt(row, shared.first->second);
    }
    if (row.heading) PlaceHeading(row);
    if (row.data->slot >= 0) slots[row.data->slot] = y;
    PlaceAt(row, y);
    y += Height(row) + gap;
  }

  void PlaceHeading(Row& row) {
    const int height = Wanted(Kind::Heading, row.headingText).height;
    row.heading->Place({left, y, width, height});
    y += height + gap / 2;
  }

  int Height(const Row& row) const {
    int height = MainSize(row).height;
    if (row.caption) height = std::max(height, Wanted(Kind::Static, row.captionText).height);
    if (row.number) height = std::max(height, NumberSize(row).height);
    return height;
  }

  void PlaceAt(Row& row, int top) {
    const int height = Height(row);
    const Size caption = row.caption ? Wanted(Kind::Static, row.captionText) : Size();
    if (row.caption) row.caption->Place(Centred(left, top, captions, caption.height, height));
    const int x = IsWhole(row) || !captions ? left : left + captions + gap;
    if (row.main) PlaceMain(row, x, top, height);
    if (row.radio) PlaceRadio(row, x, top);
    if (!row.number) return;
    const Size number = NumberSize(row);
    const int numberX = row.main ? left + width - numbers : x;
    row.number->Place(Centred(numberX, top, numbers, number.height, height));
  }

  void PlaceMain(Row& row, int x, int top, int height) {
    const Size size = MainSize(row);
    const bool stretches =
        row.data->control != RowControl::Colour && row.data->control != RowControl::Angle;
    const int room = IsWhole(row) ? width : row.number ? middle : left + width - x;
    row.main->Place(Centred(x, top, stretches ? room : size.width, size.height, height));
  }

  void PlaceRadio(Row& row, int x, int top) {
    const int height = Widest(row, Kind::RadioButton).height;
    for (std::size_t i = 0; i < row.radio->Count(); ++i) {
      row.radio->Button(i).Place({x, top + static_cast<int>(i) * height, left + width - x, height});
    }
  }

  static toolkit::Rect Centred(int x, int top, int width, int height, int rowHeight) {
    return {x, top + (rowHeight - height) / 2, width, height};
  }

  toolkit::Backend& system;
  std::vector<std::unique_ptr<Row>>& rows;
  int gap;
  int captions = 0, controls = 0, numbers = 0, wholeWidth = 0;
  int left = 0, y = 0, width = 0, middle = 0;
  std::map<int, int> slots;  // top of what shares a place
};

toolkit::Size CZNPanel::Layout(toolkit::Point origin, int leastWidth) {
  if (!dialog.Native()) return {};
  return Layouter(dialog.System(), rows).Place(origin, leastWidth);
}
