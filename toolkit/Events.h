// What the person at the screen does to a window.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "toolkit/Geometry.h"

struct IDataObject;

namespace toolkit {

class Painter;

// A control of one window, counted from 1 in the order of their making; 0 is the window itself.
using ControlId = int;

enum class Key {
  Character,
  Left,
  Right,
  Up,
  Down,
  PageUp,
  PageDown,
  Home,
  End,
  Tab,
  Enter,
  Escape,
  Space,
  Delete,
  Insert,
  Backspace,
  F1,
  F2,
  F3,
  F4,
  F5,
  F6,
  F7,
  F8,
  F9,
  F10,
  F11,
  F12,
  Other
};

struct KeyEvent {
  Key key = Key::Other;
  char32_t character = 0;  // of Key::Character, as typed
  bool shift = false, control = false, alt = false;
  bool operator==(const KeyEvent&) const = default;
};

enum class MouseAction { Press, Move, Release, DoublePress, Leave };

struct MouseEvent {
  MouseAction action = MouseAction::Move;
  Point place;     // pixels of the control
  int button = 0;  // 1 left, 2 right, 3 middle; that of the press while one is held, 0 without
  bool shift = false, control = false;
};

// Takes what happens to a window, on the thread that made it. A backend reports only what the
// person did: nothing that was set by a call comes back as an event (where the system sends one all
// the same, the receiver compares with what it knows). A window may be destroyed inside any of its
// events: a backend looks at nothing of it after that.
class WindowEvents {
 public:
  // A slider's position, a check box's or toggle button's state (0, 1), a radio button that was
  // chosen (1), the index of a combo box's or list's item, a push button that was pressed (0).
  virtual void OnValue(ControlId control, int value) = 0;
  // The whole text of an edit, after each change.
  virtual void OnText(ControlId control, const std::string& text) = 0;
  virtual void OnFocus(ControlId control, bool gained) = 0;
  // A key, before the system's control sees it; true keeps it from the control. Of sliders, edits,
  // canvases and, for those that no control wants, the window. Tab and mnemonics do not come here.
  virtual bool OnKey(ControlId control, const KeyEvent& event) = 0;
  // A key that goes down anywhere in the window, before anybody else sees it; with the control or
  // alt key the character is that of the key alone. True keeps it from all others. Not while a menu
  // is open.
  virtual bool OnShortcut(const KeyEvent& event) = 0;
  // Whether the control with the focus takes the key itself, as an edit takes letters: then it is
  // no shortcut, of this window or of the one that it is docked in.
  virtual bool KeepsKey(const KeyEvent&) { return false; }
  // Notches of a wheel, away from the person above 0, over any control but a list. No control turns
  // by itself: true says that the notches were used, otherwise they are the parent's.
  virtual bool OnWheel(ControlId control, double notches, bool hasFocus) = 0;
  // Of canvases. Moves come without a button too; a press keeps the mouse until its release.
  virtual void OnMouse(ControlId control, const MouseEvent& event) = 0;
  // A canvas is to be drawn.
  virtual void OnPaint(ControlId control, Painter& painter) = 0;
  // The button of a control that can be dragged is held and moved away. NativeWindow::Drag may be
  // called now.
  virtual void OnDragBegin(ControlId control) = 0;
  // The right button or the menu key.
  virtual void OnContextMenu(ControlId control, Point place) = 0;
  // Files that were dropped on the window, which takes them.
  virtual void OnFilesDropped(const std::vector<std::filesystem::path>&) {}
  // Something else is dragged over a window that takes objects, at a place of the client area, or
  // nothing any more; and was dropped there. The object is the caller's. False: it is of no use.
  virtual void OnObjectOver(std::optional<Point>) {}
  virtual bool OnObjectDropped(IDataObject*, Point) { return false; }
  // The guest of a dock wants another size, was hidden or shown, or is gone.
  virtual void OnDockChanged(ControlId) {}
  // An entry of the window's menu bar.
  virtual void OnMenu(int entry) = 0;
  // The person asks the window to close. It stays open unless it is told to go.
  virtual void OnCloseRequest() = 0;
  virtual void OnResized(Size client) = 0;
  virtual void OnMoved() = 0;
  // Theme, colours, font or scale of the system have changed; also the registered message
  // "MsgColorsDialogChanged" where the system has such messages.
  virtual void OnLookChanged() = 0;

 protected:
  ~WindowEvents() = default;
};

}  // namespace toolkit
