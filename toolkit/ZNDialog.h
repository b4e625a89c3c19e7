// CZNDialog: a window with controls, over whatever window system is in force.
#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "base/Export.h"
#include "toolkit/Backend.h"
#include "toolkit/ZNControls.h"
#include "toolkit/ZNMenu.h"

// Derive, make the controls in Build and lay them out there. All calls come on the windows' thread.
//
// A dialog may be closed by what one of its own controls sets off. It must not be deleted there:
// Bury hides it at once and deletes it when no event is on its way any more.
class FXBOX_API CZNDialog : private toolkit::WindowEvents {
 public:
  CZNDialog() = default;
  virtual ~CZNDialog();
  CZNDialog(const CZNDialog&) = delete;
  CZNDialog& operator=(const CZNDialog&) = delete;

  // Makes the window, hidden, with its controls. False where no window can be made (the log says
  // why); the dialog can then be used all the same and shows nothing. True at once when it is
  // there.
  bool CreateModeless(const toolkit::WindowSpec& spec);
  static void Bury(std::unique_ptr<CZNDialog> dialog);

  void Show(bool activate = true);
  void Hide();
  bool IsVisible() const;
  void SetTitle(const std::string& title);
  void SetOnTop(bool onTop);
  // The window's menu bar, which the dialog owns; it is seen once it was filled and shown, and
  // again after each change of its entries.
  CZNMenu& MenuBar();
  void ShowMenuBar();
  void* Handle() const { return native ? native->Handle() : nullptr; }

  // Shows the window and handles events until EndModal, while the window that owns it takes none;
  // gives its argument, or 0 when the window was closed or no event can come any more.
  int RunModal();
  void EndModal(int result);

  // A control of this dialog, which owns it.
  template <class Control, class... Arguments>
  Control& Make(Arguments&&... arguments) {
    auto made = std::make_unique<Control>(*this, std::forward<Arguments>(arguments)...);
    Control& control = *made;
    owned.push_back(std::move(made));
    return control;
  }

  // Null without a window.
  toolkit::NativeWindow* Native() const { return native.get(); }
  // The window system; only while there is a window or Build runs.
  toolkit::Backend& System() const { return *system; }
  // The control of this id, or null.
  CZNControl* Find(toolkit::ControlId id) const;

 protected:
  virtual void Build() {}
  // Escape and the close button. The base ends a modal run and hides the window.
  virtual void OnCancel();
  // Escape alone: the base cancels.
  virtual void OnEscape() { OnCancel(); }
  // Enter, where no button took it.
  virtual void OnEnter() {}
  // F1.
  virtual void OnHelp() {}
  // Any key, before the control with the focus has it, where it is no shortcut of the menu bar;
  // true when it was used.
  virtual bool OnAnyKey(const toolkit::KeyEvent&) { return false; }
  // Colours, fonts or scale have changed: lay out and draw anew.
  virtual void OnLook() {}
  virtual void OnResize(toolkit::Size) {}
  virtual void OnWindowMoved() {}
  // Files were dropped on a window that takes them.
  virtual void OnFiles(const std::vector<std::filesystem::path>&) {}
  // Other things are dragged over a window that takes them, or none any more; and were dropped.
  virtual void OnDragOver(std::optional<toolkit::Point>) {}
  virtual bool OnDrop(IDataObject*, toolkit::Point) { return false; }

 private:
  friend class CZNControl;

  void Attach(CZNControl& control, const toolkit::ControlSpec& spec);
  void Detach(CZNControl& control);
  bool DialogKey(const toolkit::KeyEvent& event);
  bool IsForControl(const toolkit::KeyEvent& event) const;

  void OnValue(toolkit::ControlId control, int value) override;
  void OnText(toolkit::ControlId control, const std::string& text) override;
  void OnFocus(toolkit::ControlId control, bool gained) override;
  bool OnKey(toolkit::ControlId control, const toolkit::KeyEvent& event) override;
  bool OnShortcut(const toolkit::KeyEvent& event) override;
  bool KeepsKey(const toolkit::KeyEvent& event) override;
  bool OnWheel(toolkit::ControlId control, double notches, bool hasFocus) override;
  void OnMouse(toolkit::ControlId control, const toolkit::MouseEvent& event) override;
  void OnPaint(toolkit::ControlId control, toolkit::Painter& painter) override;
  void OnDragBegin(toolkit::ControlId control) override;
  void OnContextMenu(toolkit::ControlId control, toolkit::Point place) override;
  void OnFilesDropped(const std::vector<std::filesystem::path>& files) override;
  void OnObjectOver(std::optional<toolkit::Point> place) override;
  bool OnObjectDropped(IDataObject* object, toolkit::Point place) override;
  void OnDockChanged(toolkit::ControlId dock) override;
  void OnMenu(int entry) override;
  void OnCloseRequest() override;
  void OnResized(toolkit::Size client) override;
  void OnMoved() override;
  void OnLookChanged() override;

  template <class Action>
  void ForControl(toolkit::ControlId id, Action action);

  toolkit::Backend* system = nullptr;
  std::unique_ptr<toolkit::NativeWindow> native;
  std::vector<CZNControl*> attached;  // by id - 1
  std::vector<std::unique_ptr<CZNControl>> owned;
  std::unique_ptr<CZNMenu> menuBar;
  bool isBuried = false;
  bool isModal = false;
  int modalResult = 0;
};
