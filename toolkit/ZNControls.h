// The controls of a CZNDialog. Each knows its value; the window system only shows it.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "base/Export.h"
#include "toolkit/CanvasRole.h"
#include "toolkit/Events.h"
#include "toolkit/Geometry.h"
#include "toolkit/ZNValues.h"

namespace toolkit {
class NativeWindow;
struct ControlSpec;
enum class ControlKind;
enum class SliderLook;
}  // namespace toolkit

class CZNDialog;

// Setting a value never reports a change; `onChange` of the classes below comes once for each real
// change by the person, after the new value can be asked for. A control of a dialog without a
// window keeps its value and does nothing else.
class FXBOX_API CZNControl {
 public:
  CZNControl(CZNDialog& dialog, const toolkit::ControlSpec& spec);
  virtual ~CZNControl();
  CZNControl(const CZNControl&) = delete;
  CZNControl& operator=(const CZNControl&) = delete;

  toolkit::ControlId Id() const { return id; }
  void Place(const toolkit::Rect& newPlace);
  const toolkit::Rect& Where() const { return placed; }
  void SetText(const std::string& text);
  void SetBubble(const std::string& text);
  void Enable(bool enabled);
  bool IsEnabled() const { return isEnabled; }
  void SetVisible(bool visible);
  bool IsVisible() const { return isVisible; }
  void Focus();
  // The place that the text needs here; see toolkit::Backend::PreferredSize.
  toolkit::Size Preferred(const std::string& text) const;

  // The right button or the menu key, at a place of the control.
  std::function<void(toolkit::Point)> onContextMenu;

 protected:
  // Null without a window.
  toolkit::NativeWindow* Native() const;
  CZNDialog* Dialog() const { return parent; }

 private:
  friend class CZNDialog;

  virtual void HandleValue(int) {}
  virtual void HandleText(const std::string&) {}
  virtual void HandleFocus(bool) {}
  virtual bool HandleKey(const toolkit::KeyEvent&) { return false; }
  virtual bool HandleWheel(double, bool) { return false; }
  virtual void HandleMouse(const toolkit::MouseEvent&) {}
  virtual void HandlePaint(toolkit::Painter&) {}
  virtual void HandleDragBegin() {}
  virtual void HandleDockChanged() {}
  void HandleContextMenu(toolkit::Point where);

  CZNDialog* parent;
  toolkit::ControlId id = 0;
  toolkit::ControlKind nativeKind;
  toolkit::Rect placed;
  bool isEnabled = true;
  bool isVisible = true;
};

// A text, or with `isHeading` one over a group of controls.
class FXBOX_API CZNStatic : public CZNControl {
 public:
  CZNStatic(CZNDialog& dialog, const std::string& text, bool isHeading = false);
};

class FXBOX_API CZNButton : public CZNControl {
 public:
  enum class Kind { Push, Default, Toggle };
  CZNButton(CZNDialog& dialog, const std::string& text, Kind kind = Kind::Push,
            bool canDrag = false);

  // Of toggle buttons.
  bool IsDown() const { return isDown; }
  void SetDown(bool down);

  std::function<void()> onPress;
  std::function<void()> onDrag;

 private:
  void HandleValue(int value) override;
  void HandleDragBegin() override;

  bool isToggle;
  bool isDown = false;
};

class FXBOX_API CZNCheckBox : public CZNControl {
 public:
  CZNCheckBox(CZNDialog& dialog, const std::string& text);

  bool IsChecked() const { return isChecked; }
  void SetChecked(bool checked);

  std::function<void()> onChange;

 private:
  void HandleValue(int value) override;

  bool isChecked = false;
};

// Radio buttons of which one is chosen, or none (-1).
class FXBOX_API CZNRadioGroup {
 public:
  CZNRadioGroup(CZNDialog& dialog, const std::vector<std::string>& texts);

  int Chosen() const { return chosen; }
  void Choose(int index);
  std::size_t Count() const { return buttons.size(); }
  CZNControl& Button(std::size_t index);

  std::function<void()> onChange;

 private:
  class Radio;
  void Take(int index);

  std::vector<Radio*> buttons;  // the dialog's
  int chosen = -1;
};

// The bitmaps of a slider's scale and thumb: names of resources in a module.
struct SliderBitmaps {
  void* module = nullptr;  // its handle, or an address in it
  std::string fromZero;    // "IDB_SLIDER_HD"
  std::string aroundZero;  // "IDB_SLIDER_CC"
  std::string thumb;       // "IDB_SLIDER_TMB"
};

// A number of a range. The position is the number of steps from the least value; the value may lie
// outside the range or between steps when it was set so, until the person moves the slider.
class FXBOX_API CZNSlider : public CZNControl {
 public:
  CZNSlider(CZNDialog& dialog, const std::string& name, const ValueRange& sliderRange,
            toolkit::SliderLook look);

  double Value() const { return value; }
  void SetValue(double newValue);

  std::function<void()> onChange;

  // For the module's start and end: draws sliders with these bitmaps, and again without. The flags
  // turn the drawn scale and the drawn thumb on.
  static void AttachBitmaps(const SliderBitmaps& bitmaps, bool drawScale, bool drawThumb);
  static void DetachBitmaps();
  // Null without bitmaps, or where the flag is off.
  static const SliderBitmaps* ScaleBitmaps();
  static const SliderBitmaps* ThumbBitmaps();

 private:
  void HandleValue(int newPosition) override;
  bool HandleKey(const toolkit::KeyEvent& event) override;
  bool HandleWheel(double notches, bool hasFocus) override;
  void MoveTo(int newPosition);

  ValueRange range;
  double value;
  int position = 0;
};

// A number that is typed. It counts as soon as it lies in the range; leaving the field or Enter
// brings any other text back to the nearest value. Up and Down step.
class FXBOX_API CZNNumberField : public CZNControl {
 public:
  CZNNumberField(CZNDialog& dialog, const std::string& name, const ValueRange& fieldRange);

  double Value() const { return value; }
  void SetValue(double newValue);

  std::function<void()> onChange;

 private:
  void HandleText(const std::string& newText) override;
  void HandleFocus(bool gained) override;
  bool HandleKey(const toolkit::KeyEvent& event) override;
  bool HandleWheel(double notches, bool hasFocus) override;
  void Take(double newValue);
  void ShowValue();

  ValueRange range;
  double value;
  std::string text;
};

class FXBOX_API CZNEdit : public CZNControl {
 public:
  CZNEdit(CZNDialog& dialog, const std::string& name);

  const std::string& Text() const { return text; }
  void SetEditText(const std::string& newText);

  std::function<void()> onChange;
  std::function<void()> onEnter;

 private:
  void HandleText(const std::string& newText) override;
  bool HandleKey(const toolkit::KeyEvent& event) override;

  std::string text;
};

// A choice from texts, or none (-1): a combo box, or with `isOpen` a list.
class FXBOX_API CZNComboBox : public CZNControl {
 public:
  CZNComboBox(CZNDialog& dialog, const std::string& name, const std::vector<std::string>& texts,
              bool isOpen = false);

  int Chosen() const { return chosen; }
  void Choose(int index);
  void SetItems(const std::vector<std::string>& newItems);
  const std::vector<std::string>& Items() const { return items; }

  std::function<void()> onChange;

 private:
  void HandleValue(int index) override;
  bool HandleWheel(double notches, bool hasFocus) override;

  std::vector<std::string> items;
  int chosen = -1;
};

class FXBOX_API CZNListBox : public CZNComboBox {
 public:
  CZNListBox(CZNDialog& dialog, const std::string& name, const std::vector<std::string>& texts)
      : CZNComboBox(dialog, name, texts, true) {}
};

// Shows a colour and lets the person choose another one.
class FXBOX_API CZNColorButton : public CZNControl {
 public:
  CZNColorButton(CZNDialog& dialog, const std::string& pickerTitle);

  toolkit::Colour Value() const { return value; }
  void SetValue(toolkit::Colour newValue);

  std::function<void()> onChange;

 private:
  void HandleValue(int) override;
  void Take(toolkit::Colour newValue);

  std::string title;
  toolkit::Colour value;
};

// A place that draws itself and takes mouse and keys.
class FXBOX_API CZNCanvas : public CZNControl {
 public:
  CZNCanvas(CZNDialog& dialog, const std::string& name,
            toolkit::CanvasRole role = toolkit::CanvasRole::Adjustable);
  void Redraw();

 protected:
  // What a screen reader says of it, and of the rows of a list.
  void SetValueText(const std::string& text);
  void SetRows(std::vector<toolkit::CanvasRow> newRows);

 private:
  std::vector<toolkit::CanvasRow> toldRows;
};

// A place for the window of another dialog. What lives there stays that dialog's.
class FXBOX_API CZNDock : public CZNControl {
 public:
  CZNDock(CZNDialog& dialog, const std::string& name);
  ~CZNDock() override;

  // See toolkit::NativeWindow::Dock; must not be called in an event of that window.
  bool Take(void* window);
  void GiveBack();
  toolkit::Size Wanted() const;

  // Wanted has changed.
  std::function<void()> onChange;

 private:
  void HandleDockChanged() override;
};
