// The controls of a window as child windows of the system.
#pragma once

#include <windows.h>
// behind windows.h
#include <commctrl.h>

#include <memory>

#include "toolkit/Backend.h"
#include "toolkit/windows/AccessibleControl.h"
#include "toolkit/windows/System.h"

namespace toolkit {

// One control. Nothing of the object may be looked at after an event was told: it may be gone.
class WindowsControl {
 public:
  virtual ~WindowsControl();
  WindowsControl(const WindowsControl&) = delete;
  WindowsControl& operator=(const WindowsControl&) = delete;

  HWND Handle() const { return handle; }
  ControlKind Kind() const { return spec.kind; }
  ControlId Id() const { return id; }

  // The focus goes on ahead of it: keys find no way from a control that is switched off.
  void SetEnabled(bool enabled);
  void SetVisible(bool visible) { ShowWindow(handle, visible ? SW_SHOWNA : SW_HIDE); }
  // For screen readers; the system's own know the rest of what its controls show.
  void SetValueText(const std::string& text);
  void SetRows(const std::vector<CanvasRow>& newRows);
  virtual bool Dock(void*) { return false; }
  virtual Size DockedSize() { return {}; }
  void Focus() { SetFocus(handle); }
  void SelectAll() { SendMessageW(handle, EM_SETSEL, 0, -1); }
  void Redraw() { InvalidateRect(handle, nullptr, FALSE); }
  virtual void Place(const Rect& place);
  virtual void SetText(const std::string& text);
  virtual void SetRange(int, int) {}
  virtual void SetValue(int) {}
  virtual void SetItems(const std::vector<std::string>&) {}
  virtual void SetColour(Colour) {}
  virtual void SetFont();

  // What the parent hears of the control: WM_COMMAND's code, and a scroll bar's message.
  virtual void HandleCommand(int) {}
  virtual void HandleScroll() {}
  // WM_DRAWITEM, and NM_CUSTOMDRAW with its answer.
  virtual void Draw(const DRAWITEMSTRUCT&) {}
  virtual LRESULT CustomDraw(NMCUSTOMDRAW&) { return CDRF_DODEFAULT; }

 protected:
  WindowsControl(ControlId newId, const ControlSpec& controlSpec, WindowEvents& receiver,
                 WindowsSystem& windowsSystem);
  // Makes the child window; every constructor ends with it.
  void Create(HWND parent, const wchar_t* windowClass, DWORD style, DWORD extended = 0);
  // Paints the frame in a dark theme; for HandleMessage of what has one.
  bool PaintsDarkFrame(UINT message, WPARAM wide, LPARAM more, LRESULT& result);
  // Messages that a control has to itself; true when `result` is the answer.
  virtual bool HandleMessage(UINT message, WPARAM wide, LPARAM more, LRESULT& result);

  ControlSpec spec;
  WindowEvents& events;
  WindowsSystem& system;

 private:
  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wide, LPARAM more, UINT_PTR,
                                    DWORD_PTR data);
  LRESULT HandleContextMenu(LPARAM screenPlace);
  bool DetectDrag(LPARAM clientPlace);

  HWND handle = nullptr;
  ControlId id;
  std::shared_ptr<AccessibleContent> told;
};

std::unique_ptr<WindowsControl> MakeWindowsControl(HWND parent, ControlId id,
                                                   const ControlSpec& spec, WindowEvents& events,
                                                   WindowsSystem& system);
// The two halves of it: null for a kind that is not the system's own, and what is left.
std::unique_ptr<WindowsControl> MakeSystemControl(HWND parent, ControlId id,
                                                  const ControlSpec& spec, WindowEvents& events,
                                                  WindowsSystem& system);
std::unique_ptr<WindowsControl> MakeOwnControl(HWND parent, ControlId id, const ControlSpec& spec,
                                               WindowEvents& events, WindowsSystem& system);

// The size in which a control shows this text, and its name for the class of canvases.
Size PreferredControlSize(const WindowsSystem& system, ControlKind kind, const std::string& text);
inline constexpr wchar_t kCanvasClass[] = L"FxboxCanvas4";

// What a key message says of a key; false for keys that are nobody's event.
bool TakeKey(const MSG& message, KeyEvent& event);
// The key of a message of a key that goes down; Key::Other for those that mean nothing alone.
KeyEvent PressedKey(const MSG& message);

}  // namespace toolkit
