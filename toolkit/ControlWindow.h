// A window whose controls are objects: a call about a control goes to the control.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "toolkit/Backend.h"

namespace toolkit {

// `Control` is a backend's class of controls, with one operation for each call.
template <class Control>
class ControlWindow : public NativeWindow {
 public:
  void Place(ControlId control, const Rect& place) override {
    if (Control* found = Find(control)) found->Place(place);
  }
  void SetText(ControlId control, const std::string& text) override {
    if (Control* found = Find(control)) found->SetText(text);
  }
  void SetRange(ControlId slider, int least, int greatest) override {
    if (Control* found = Find(slider)) found->SetRange(least, greatest);
  }
  void SetValue(ControlId control, int value) override {
    if (Control* found = Find(control)) found->SetValue(value);
  }
  void SetItems(ControlId control, const std::vector<std::string>& items) override {
    if (Control* found = Find(control)) found->SetItems(items);
  }
  void SetColour(ControlId colourButton, Colour colour) override {
    if (Control* found = Find(colourButton)) found->SetColour(colour);
  }
  void SetEnabled(ControlId control, bool enabled) override {
    if (Control* found = Find(control)) found->SetEnabled(enabled);
  }
  void SetVisible(ControlId control, bool visible) override {
    if (Control* found = Find(control)) found->SetVisible(visible);
  }
  void SetValueText(ControlId control, const std::string& text) override {
    if (Control* found = Find(control)) found->SetValueText(text);
  }
  void SetRows(ControlId canvas, const std::vector<CanvasRow>& rows) override {
    if (Control* found = Find(canvas)) found->SetRows(rows);
  }
  bool Dock(ControlId dock, void* guest) override {
    Control* const found = Find(dock);
    return found && found->Dock(guest);
  }
  Size DockedSize(ControlId dock) override {
    Control* const found = Find(dock);
    return found ? found->DockedSize() : Size();
  }
  void Focus(ControlId control) override {
    if (Control* found = Find(control)) found->Focus();
  }
  void SelectAll(ControlId edit) override {
    if (Control* found = Find(edit)) found->SelectAll();
  }
  void Redraw(ControlId canvas) override {
    if (Control* found = Find(canvas)) found->Redraw();
  }

 protected:
  Control* Find(ControlId control) const {
    const bool exists = control >= 1 && static_cast<std::size_t>(control) <= controls.size();
    return exists ? controls[static_cast<std::size_t>(control) - 1].get() : nullptr;
  }
  ControlId NextId() const { return static_cast<ControlId>(controls.size()) + 1; }

  std::vector<std::unique_ptr<Control>> controls;  // by id - 1
};

}  // namespace toolkit
