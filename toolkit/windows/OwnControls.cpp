// The controls that are ours: canvases, which the receiver paints, and docks.
#include <windowsx.h>

#include <algorithm>
#include <utility>

#include "toolkit/windows/Controls.h"
#include "toolkit/windows/GdiPainter.h"
#include "toolkit/windows/WindowsWindow.h"

namespace toolkit {
namespace {

// --- canvases

// A device in memory of a window's size, copied to the window at the end.
class Buffer {
 public:
  Buffer(HDC targetDevice, Size bufferSize)
      : target(targetDevice),
        size(bufferSize),
        memory(CreateCompatibleDC(target)),
        bitmap(CreateCompatibleBitmap(target, size.width, size.height)),
        before(SelectObject(memory, bitmap)) {}
  ~Buffer() {
    BitBlt(target, 0, 0, size.width, size.height, memory, 0, 0, SRCCOPY);
    SelectObject(memory, before);
    DeleteObject(bitmap);
    DeleteDC(memory);
  }
  Buffer(const Buffer&) = delete;
  Buffer& operator=(const Buffer&) = delete;

  HDC Device() const { return memory; }

 private:
  HDC target;
  Size size;
  HDC memory;
  HBITMAP bitmap;
  HGDIOBJ before;
};

class CanvasControl final : public WindowsControl {
 public:
  CanvasControl(HWND parent, ControlId newId, const ControlSpec& controlSpec,
                WindowEvents& receiver, WindowsSystem& shared)
      : WindowsControl(newId, controlSpec, receiver, shared) {
    Create(parent, kCanvasClass, TakesFocus(controlSpec.role) ? WS_TABSTOP : 0);
  }

 private:
  bool HandleMessage(UINT message, WPARAM wide, LPARAM more, LRESULT& result) override;
  void Paint();
  void Tell(MouseAction action, int button, WPARAM keys, LPARAM place);
  void Press(MouseAction action, int button, WPARAM keys, LPARAM place);
  void Release(int button, WPARAM keys, LPARAM place);
  void Move(WPARAM keys, LPARAM place);

  bool isInside = false;
};

bool CanvasControl::HandleMessage(UINT message, WPARAM wide, LPARAM more, LRESULT& result) {
  result = 0;
  switch (message) {
    case WM_PAINT:
      Paint();
      return true;
    case WM_ERASEBKGND:
      result = 1;
      return true;
    case WM_GETDLGCODE:
      result = DLGC_WANTARROWS | DLGC_WANTCHARS;
      return true;
    case WM_LBUTTONDOWN:
      Press(MouseAction::Press, 1, wide, more);
      return true;
    case WM_LBUTTONDBLCLK:
      Press(MouseAction::DoublePress, 1, wide, more);
      return true;
    case WM_MBUTTONDOWN:
      Press(MouseAction::Press, 3, wide, more);
      return true;
    case WM_LBUTTONUP:
      Release(1, wide, more);
      return true;
    case WM_MBUTTONUP:
      Release(3, wide, more);
      return true;
    case WM_MOUSEMOVE:
      Move(wide, more);
      return true;
    case WM_MOUSELEAVE:
      isInside = false;
      events.OnMouse(Id(), {MouseAction::Leave, {}, 0});
      return true;
    default:
      return false;
  }
}

void CanvasControl::Paint() {
  PAINTSTRUCT paint;
  HDC device = BeginPaint(Handle(), &paint);
  RECT client;
  GetClientRect(Handle(), &client);
  const Size size = {static_cast<int>(client.right), static_cast<int>(client.bottom)};
  HWND const window = Handle();
  if (size.width > 0 && size.height > 0) {
    const Buffer buffer(device, size);
    GdiPainter painter(buffer.Device(), system.Font(), size);
    events.OnPaint(Id(), painter);
  }
  EndPaint(window, &paint);
}

void CanvasControl::Tell(MouseAction action, int button, WPARAM keys, LPARAM place) {
  events.OnMouse(Id(), {action,
                        {GET_X_LPARAM(place), GET_Y_LPARAM(place)},
                        button,
                        (keys & MK_SHIFT) != 0,
                        (keys & MK_CONTROL) != 0});
}

void CanvasControl::Press(MouseAction action, int button, WPARAM keys, LPARAM place) {
  if (TakesFocus(spec.role)) SetFocus(Handle());
  SetCapture(Handle());
  Tell(action, button, keys, place);
}

void CanvasControl::Release(int button, WPARAM keys, LPARAM place) {
  ReleaseCapture();
  Tell(MouseAction::Release, button, keys, place);
}

void CanvasControl::Move(WPARAM keys, LPARAM place) {
  if (!isInside) {
    TRACKMOUSEEVENT track = {sizeof track, TME_LEAVE, Handle(), 0};
    isInside = TrackMouseEvent(&track);
  }
  Tell(MouseAction::Move, keys & MK_LBUTTON ? 1 : keys & MK_MBUTTON ? 3 : 0, keys, place);
}

// --- docks

constexpr int kLine = 24;  // that the arrows of a scroll bar move by

class DockControl final : public WindowsControl, public WindowsWindow::Host {
 public:
  DockControl(HWND parent, ControlId newId, const ControlSpec& controlSpec, WindowEvents& receiver,
              WindowsSystem& shared)
      : WindowsControl(newId, controlSpec, receiver, shared) {
    Create(parent, kCanvasClass, WS_CLIPCHILDREN | WS_HSCROLL | WS_VSCROLL, WS_EX_CONTROLPARENT);
  }
  ~DockControl() override { DockControl::Dock(nullptr); }

  bool Dock(void* window) override;
  Size DockedSize() override { return guest ? guest->WantedSize() : Size(); }
  void Place(const Rect& place) override {
    WindowsControl::Place(place);
    Arrange();
  }

  void GuestChanged() override {
    Arrange();
    events.OnDockChanged(Id());
  }
  void GuestGone() override {
    guest = nullptr;
    events.OnDockChanged(Id());
  }
  void ShowGuestPart(const RECT& onScreen) override;

 private:
  bool HandleMessage(UINT message, WPARAM wide, LPARAM more, LRESULT& result) override;
  void Arrange();
  // -1: the bar has not moved.
  int Scrolled(int bar, int request, int line) const;
  void ScrollTo(int bar, int place);
  int PlaceOf(int bar) const;

  WindowsWindow* guest = nullptr;
};

bool DockControl::Dock(void* window) {
  WindowsWindow* const next = WindowsWindow::OfHandle(window);
  if (window && !next) return false;
  if (next == guest) return true;
  if (guest) std::exchange(guest, nullptr)->LeaveHost();
  if (next && next->EnterHost(this, Handle())) guest = next;
  ScrollTo(SB_VERT, 0);
  return guest == next;
}

int DockControl::PlaceOf(int bar) const {
  SCROLLINFO info = {};
  info.cbSize = sizeof info;
  info.fMask = SIF_POS;
  GetScrollInfo(Handle(), bar, &info);
  return info.nPos;
}

// Bars come and go with what they have to move.
void DockControl::Arrange() {
  const Size wanted = DockedSize();
  for (const int bar : {SB_VERT, SB_HORZ}) {
    RECT client;
    GetClientRect(Handle(), &client);
    const LONG page = bar == SB_VERT ? client.bottom : client.right;
    SCROLLINFO info = {};
    info.cbSize = sizeof info;
    info.fMask = SIF_RANGE | SIF_PAGE;
    info.nMax = (bar == SB_VERT ? wanted.height : wanted.width) - 1;
    info.nPage = static_cast<UINT>(page > 0 ? page : 0);
    if (info.nMax < 0) info.nMax = 0;
    SetScrollInfo(Handle(), bar, &info, TRUE);
  }
  if (!guest) return;
  RECT client;
  GetClientRect(Handle(), &client);
  const int width = std::max(wanted.width, static_cast<int>(client.right));
  const int height = std::max(wanted.height, static_cast<int>(client.bottom));
  guest->PlaceInHost({-PlaceOf(SB_HORZ), -PlaceOf(SB_VERT), width, height});
}

void DockControl::ScrollTo(int bar, int place) {
  SetScrollPos(Handle(), bar, place, TRUE);
  Arrange();
}

int DockControl::Scrolled(int bar, int request, int line) const {
  SCROLLINFO info = {};
  info.cbSize = sizeof info;
  info.fMask = SIF_ALL;
  GetScrollInfo(Handle(), bar, &info);
  const int page = static_cast<int>(info.nPage);
  switch (request) {
    case SB_LINEUP:
      return std::max(0, info.nPos - line);
    case SB_LINEDOWN:
      return info.nPos + line;
    case SB_PAGEUP:
      return std::max(0, info.nPos - page);
    case SB_PAGEDOWN:
      return info.nPos + page;
    case SB_THUMBPOSITION:
    case SB_THUMBTRACK:
      return info.nTrackPos;
    case SB_TOP:
      return 0;
    case SB_BOTTOM:
      return info.nMax;
    default:
      return info.nPos;
  }
}

// So that the control with the focus is seen.
void DockControl::ShowGuestPart(const RECT& onScreen) {
  RECT seen;
  GetClientRect(Handle(), &seen);
  MapWindowPoints(Handle(), nullptr, reinterpret_cast<POINT*>(&seen), 2);
  const LONG below = onScreen.bottom - seen.bottom, above = seen.top - onScreen.top;
  if (below > 0) ScrollTo(SB_VERT, PlaceOf(SB_VERT) + static_cast<int>(below));
  if (above > 0) ScrollTo(SB_VERT, PlaceOf(SB_VERT) - static_cast<int>(above));
}

bool DockControl::HandleMessage(UINT message, WPARAM wide, LPARAM, LRESULT& result) {
  const int line = system.Scaled(kLine);
  result = 0;
  switch (message) {
    case WM_ERASEBKGND: {
      RECT client;
      GetClientRect(Handle(), &client);
      FillRect(reinterpret_cast<HDC>(wide), &client, system.WindowBrush());
      result = 1;
      return true;
    }
    case WM_VSCROLL:
    case WM_HSCROLL: {
      const int bar = message == WM_VSCROLL ? SB_VERT : SB_HORZ;
      ScrollTo(bar, Scrolled(bar, LOWORD(wide), line));
      return true;
    }
    case WM_MOUSEWHEEL:
      ScrollTo(SB_VERT, std::max(0, PlaceOf(SB_VERT) -
                                        3 * line * GET_WHEEL_DELTA_WPARAM(wide) / WHEEL_DELTA));
      return true;
    default:
      return false;
  }
}

}  // namespace

std::unique_ptr<WindowsControl> MakeOwnControl(HWND parent, ControlId id, const ControlSpec& spec,
                                               WindowEvents& events, WindowsSystem& system) {
  if (spec.kind == ControlKind::Dock) {
    return std::make_unique<DockControl>(parent, id, spec, events, system);
  }
  return std::make_unique<CanvasControl>(parent, id, spec, events, system);
}

}  // namespace toolkit
