#include "toolkit/ZNControls.h"

#include <algorithm>
#include <cmath>

#include "toolkit/Backend.h"
#include "toolkit/ZNDialog.h"

namespace {

using toolkit::ControlKind;
using toolkit::ControlSpec;
using toolkit::Key;
using toolkit::KeyEvent;

constexpr int kPage = 10;

struct BitmapSetting {
  SliderBitmaps bitmaps;
  bool scale = false, thumb = false;
};

// Made when it is first asked for: the module starts before the static objects of this file.
BitmapSetting& AttachedBitmaps() {
  static BitmapSetting setting;
  return setting;
}

ControlSpec Named(ControlKind kind, const std::string& name) {
  ControlSpec spec;
  spec.kind = kind;
  spec.name = name;
  return spec;
}

ControlSpec Captioned(ControlKind kind, const std::string& text) {
  ControlSpec spec;
  spec.kind = kind;
  spec.text = text;
  return spec;
}

ControlSpec ButtonSpec(const std::string& text, CZNButton::Kind kind, bool canDrag) {
  ControlSpec spec = Captioned(
      kind == CZNButton::Kind::Toggle ? ControlKind::ToggleButton : ControlKind::Button, text);
  spec.isDefault = kind == CZNButton::Kind::Default;
  spec.canDrag = canDrag;
  return spec;
}

ControlSpec SliderSpec(const std::string& name, toolkit::SliderLook look) {
  ControlSpec spec = Named(ControlKind::Slider, name);
  spec.look = look;
  return spec;
}

ControlSpec CanvasSpec(const std::string& name, toolkit::CanvasRole role) {
  ControlSpec spec = Named(ControlKind::Canvas, name);
  spec.role = role;
  return spec;
}

ControlSpec RadioSpec(const std::string& text, bool opensGroup) {
  ControlSpec spec = Captioned(ControlKind::RadioButton, text);
  spec.opensGroup = opensGroup;
  return spec;
}

// Steps that a key asks for, in a range of `all` steps; 0 for other keys.
int StepsOf(const KeyEvent& event, int all) {
  switch (event.key) {
    case Key::Left:
    case Key::Down:
      return -1;
    case Key::Right:
    case Key::Up:
      return 1;
    case Key::PageDown:
      return -kPage;
    case Key::PageUp:
      return kPage;
    case Key::Home:
      return -all;
    case Key::End:
      return all;
    default:
      return 0;
  }
}

void Call(const std::function<void()>& action) {
  if (action) action();
}

}  // namespace

// --- CZNControl

CZNControl::CZNControl(CZNDialog& dialog, const ControlSpec& spec)
    : parent(&dialog), nativeKind(spec.kind) {
  dialog.Attach(*this, spec);
}

CZNControl::~CZNControl() {
  if (parent) parent->Detach(*this);
}

toolkit::NativeWindow* CZNControl::Native() const {
  return parent && id ? parent->Native() : nullptr;
}

void CZNControl::Place(const toolkit::Rect& newPlace) {
  placed = newPlace;
  if (auto* native = Native()) native->Place(id, placed);
}

void CZNControl::SetText(const std::string& text) {
  if (auto* native = Native()) native->SetText(id, text);
}

void CZNControl::SetBubble(const std::string& text) {
  if (auto* native = Native()) native->SetBubble(id, text);
}

void CZNControl::Enable(bool enabled) {
  if (isEnabled == enabled) return;
  isEnabled = enabled;
  if (auto* native = Native()) native->SetEnabled(id, enabled);
}

void CZNControl::SetVisible(bool visible) {
  if (isVisible == visible) return;
  isVisible = visible;
  if (auto* native = Native()) native->SetVisible(id, visible);
}

void CZNControl::Focus() {
  if (auto* native = Native()) native->Focus(id);
}

toolkit::Size CZNControl::Preferred(const std::string& text) const {
  return Native() ? parent->System().PreferredSize(nativeKind, text) : toolkit::Size();
}

void CZNControl::HandleContextMenu(toolkit::Point where) {
  if (onContextMenu) onContextMenu(where);
}

// --- CZNStatic, CZNButton, CZNCheckBox

CZNStatic::CZNStatic(CZNDialog& dialog, const std::string& text, bool isHeading)
    : CZNControl(dialog, Captioned(isHeading ? ControlKind::Heading : ControlKind::Static, text)) {}

CZNButton::CZNButton(CZNDialog& dialog, const std::string& text, Kind kind, bool canDrag)
    : CZNControl(dialog, ButtonSpec(text, kind, canDrag)), isToggle(kind == Kind::Toggle) {}

void CZNButton::SetDown(bool down) {
  isDown = down;
  if (auto* native = Native()) native->SetValue(Id(), down);
}

void CZNButton::HandleValue(int value) {
  if (isToggle) {
    if (isDown == (value != 0)) return;
    isDown = value != 0;
  }
  Call(onPress);
}

void CZNButton::HandleDragBegin() {
  Call(onDrag);
}

CZNCheckBox::CZNCheckBox(CZNDialog& dialog, const std::string& text)
    : CZNControl(dialog, Captioned(ControlKind::CheckBox, text)) {}

void CZNCheckBox::SetChecked(bool checked) {
  isChecked = checked;
  if (auto* native = Native()) native->SetValue(Id(), checked);
}

void CZNCheckBox::HandleValue(int value) {
  if (isChecked == (value != 0)) return;
  isChecked = value != 0;
  Call(onChange);
}

// --- CZNRadioGroup

class CZNRadioGroup::Radio : public CZNControl {
 public:
  Radio(CZNDialog& dialog, const std::string& text, CZNRadioGroup& ofGroup, int atIndex)
      : CZNControl(dialog, RadioSpec(text, atIndex == 0)), group(&ofGroup), index(atIndex) {}

  void Set(bool isChosen) {
    if (auto* native = Native()) native->SetValue(Id(), isChosen);
  }

 private:
  void HandleValue(int value) override {
    if (value) group->Take(index);
  }

  CZNRadioGroup* group;
  int index;
};

CZNRadioGroup::CZNRadioGroup(CZNDialog& dialog, const std::vector<std::string>& texts) {
  for (const std::string& text : texts) {
    buttons.push_back(&dialog.Make<Radio>(text, *this, static_cast<int>(buttons.size())));
  }
}

void CZNRadioGroup::Choose(int index) {
  chosen = index;
  for (std::size_t i = 0; i < buttons.size(); ++i) buttons[i]->Set(static_cast<int>(i) == index);
}

CZNControl& CZNRadioGroup::Button(std::size_t index) {
  return *buttons[index];
}

void CZNRadioGroup::Take(int index) {
  if (index == chosen) return;
  Choose(index);
  Call(onChange);
}

// --- CZNSlider

CZNSlider::CZNSlider(CZNDialog& dialog, const std::string& name, const ValueRange& sliderRange,
                     toolkit::SliderLook look)
    : CZNControl(dialog, SliderSpec(name, look)), range(sliderRange), value(sliderRange.least) {
  if (auto* native = Native()) native->SetRange(Id(), 0, range.Positions());
  SetValue(value);
}

void CZNSlider::SetValue(double newValue) {
  value = newValue;
  position = range.PositionOf(value);
  auto* native = Native();
  if (!native) return;
  native->SetValue(Id(), position);
  native->SetValueText(Id(), NumberText(value, range.decimals));
}

void CZNSlider::HandleValue(int newPosition) {
  if (newPosition == position || newPosition < 0 || newPosition > range.Positions()) return;
  SetValue(range.ValueAt(newPosition));
  Call(onChange);
}

void CZNSlider::MoveTo(int newPosition) {
  HandleValue(std::clamp(newPosition, 0, range.Positions()));
}

bool CZNSlider::HandleKey(const KeyEvent& event) {
  const int steps = event.alt || event.control ? 0 : StepsOf(event, range.Positions());
  if (steps != 0) MoveTo(position + steps);
  return steps != 0;
}

bool CZNSlider::HandleWheel(double notches, bool hasFocus) {
  if (!hasFocus) return false;
  MoveTo(position + static_cast<int>(std::lround(notches)));
  return true;
}

void CZNSlider::AttachBitmaps(const SliderBitmaps& bitmaps, bool drawScale, bool drawThumb) {
  AttachedBitmaps() = {bitmaps, drawScale, drawThumb};
}

void CZNSlider::DetachBitmaps() {
  AttachedBitmaps() = {};
}

const SliderBitmaps* CZNSlider::ScaleBitmaps() {
  return AttachedBitmaps().scale ? &AttachedBitmaps().bitmaps : nullptr;
}

const SliderBitmaps* CZNSlider::ThumbBitmaps() {
  return AttachedBitmaps().thumb ? &AttachedBitmaps().bitmaps : nullptr;
}

// --- CZNNumberField

CZNNumberField::CZNNumberField(CZNDialog& dialog, const std::string& name,
                               const ValueRange& fieldRange)
    : CZNControl(dialog, Named(ControlKind::Edit, name)),
      range(fieldRange),
      value(fieldRange.least) {
  ShowValue();
}

void CZNNumberField::SetValue(double newValue) {
  if (value == newValue && NumberOf(text) == newValue) return;  // what is being typed stays
  value = newValue;
  ShowValue();
}

void CZNNumberField::ShowValue() {
  text = NumberText(value, range.decimals);
  SetText(text);
}

void CZNNumberField::HandleText(const std::string& newText) {
  text = newText;
  const auto number = NumberOf(text);
  if (number && *number >= range.least && *number <= range.greatest) Take(range.Nearest(*number));
}

void CZNNumberField::Take(double newValue) {
  if (newValue == value) return;
  value = newValue;
  Call(onChange);
}

void CZNNumberField::HandleFocus(bool gained) {
  if (gained) {
    if (auto* native = Native()) native->SelectAll(Id());
    return;
  }
  const auto number = NumberOf(text);
  if (number && *number != value) Take(range.Nearest(*number));
  ShowValue();
}

bool CZNNumberField::HandleKey(const KeyEvent& event) {
  if (event.key == Key::Enter) {
    HandleFocus(false);
    return true;
  }
  const bool isStep = event.key == Key::Up || event.key == Key::Down || event.key == Key::PageUp ||
                      event.key == Key::PageDown;
  if (!isStep) return false;
  const int steps = StepsOf(event, range.Positions());
  Take(range.Nearest(range.Nearest(value) + steps * range.step));
  ShowValue();
  return true;
}

bool CZNNumberField::HandleWheel(double notches, bool hasFocus) {
  if (!hasFocus) return false;
  Take(range.Nearest(value + std::round(notches) * range.step));
  ShowValue();
  return true;
}

// --- CZNEdit, CZNComboBox

CZNEdit::CZNEdit(CZNDialog& dialog, const std::string& name)
    : CZNControl(dialog, Named(ControlKind::Edit, name)) {}

void CZNEdit::SetEditText(const std::string& newText) {
  if (text == newText) return;  // the place of the caret stays
  text = newText;
  SetText(text);
}

void CZNEdit::HandleText(const std::string& newText) {
  if (text == newText) return;
  text = newText;
  Call(onChange);
}

bool CZNEdit::HandleKey(const KeyEvent& event) {
  if (event.key != Key::Enter || !onEnter) return false;
  onEnter();
  return true;
}

CZNComboBox::CZNComboBox(CZNDialog& dialog, const std::string& name,
                         const std::vector<std::string>& newItems, bool isOpen)
    : CZNControl(dialog, Named(isOpen ? ControlKind::List : ControlKind::ComboBox, name)) {
  SetItems(newItems);
}

void CZNComboBox::SetItems(const std::vector<std::string>& newItems) {
  items = newItems;
  if (auto* native = Native()) native->SetItems(Id(), items);
  Choose(-1);
}

void CZNComboBox::Choose(int index) {
  chosen = index >= 0 && static_cast<std::size_t>(index) < items.size() ? index : -1;
  if (auto* native = Native()) native->SetValue(Id(), chosen);
}

void CZNComboBox::HandleValue(int index) {
  if (index == chosen) return;
  Choose(index);
  Call(onChange);
}

bool CZNComboBox::HandleWheel(double notches, bool hasFocus) {
  if (!hasFocus || items.empty()) return false;
  const int last = static_cast<int>(items.size()) - 1;
  HandleValue(std::clamp(chosen - static_cast<int>(std::lround(notches)), 0, last));
  return true;
}

// --- CZNColorButton, CZNCanvas, CZNDock

CZNColorButton::CZNColorButton(CZNDialog& dialog, const std::string& pickerTitle)
    : CZNControl(dialog, Named(ControlKind::ColourButton, pickerTitle)), title(pickerTitle) {}

void CZNColorButton::SetValue(toolkit::Colour newValue) {
  value = newValue;
  auto* native = Native();
  if (!native) return;
  native->SetColour(Id(), value);
  native->SetValueText(Id(), std::to_string(value.red) + ", " + std::to_string(value.green) + ", " +
                                 std::to_string(value.blue));
}

void CZNColorButton::Take(toolkit::Colour newValue) {
  if (newValue == value) return;
  SetValue(newValue);
  Call(onChange);
}

// What was tried out is taken back when the person cancels.
void CZNColorButton::HandleValue(int) {
  auto* native = Native();
  if (!native) return;
  const toolkit::Colour before = value;
  const auto answer =
      native->AskColour(title, before, [this](toolkit::Colour tried) { Take(tried); });
  Take(answer.value_or(before));
}

CZNCanvas::CZNCanvas(CZNDialog& dialog, const std::string& name, toolkit::CanvasRole role)
    : CZNControl(dialog, CanvasSpec(name, role)) {}

void CZNCanvas::Redraw() {
  if (auto* native = Native()) native->Redraw(Id());
}

void CZNCanvas::SetValueText(const std::string& text) {
  if (auto* native = Native()) native->SetValueText(Id(), text);
}

void CZNCanvas::SetRows(std::vector<toolkit::CanvasRow> newRows) {
  if (toldRows == newRows) return;
  toldRows = std::move(newRows);
  if (auto* native = Native()) native->SetRows(Id(), toldRows);
}

CZNDock::CZNDock(CZNDialog& dialog, const std::string& name)
    : CZNControl(dialog, Named(ControlKind::Dock, name)) {}

CZNDock::~CZNDock() {
  GiveBack();
}

bool CZNDock::Take(void* window) {
  auto* const native = Native();
  return native && native->Dock(Id(), window);
}

void CZNDock::GiveBack() {
  if (auto* native = Native()) native->Dock(Id(), nullptr);
}

toolkit::Size CZNDock::Wanted() const {
  auto* const native = Native();
  return native ? native->DockedSize(Id()) : toolkit::Size();
}

void CZNDock::HandleDockChanged() {
  Call(onChange);
}
