#include "toolkit/windows/Controls.h"

#include <oleacc.h>
#include <uxtheme.h>
#include <vssym32.h>
#include <windowsx.h>

#include <algorithm>
#include <utility>

#include "toolkit/ZNControls.h"
#include "toolkit/windows/DarkControls.h"
#include "toolkit/windows/GdiPainter.h"
#include "toolkit/windows/WideText.h"
#include "toolkit/windows/WindowsWindow.h"

namespace toolkit {
namespace {

constexpr UINT kWithFrame = RDW_INVALIDATE | RDW_FRAME;

bool IsDown(int key) {
  return GetKeyState(key) < 0;
}

// --- texts

class TextControl final : public WindowsControl {
 public:
  TextControl(HWND parent, ControlId newId, const ControlSpec& controlSpec, WindowEvents& receiver,
              WindowsSystem& shared)
      : WindowsControl(newId, controlSpec, receiver, shared) {
    Create(parent, L"STATIC", SS_LEFTNOWORDWRAP | SS_CENTERIMAGE);
  }
  void SetFont() override {
    HFONT font = Kind() == ControlKind::Heading ? system.BoldFont() : system.Font();
    SendMessageW(Handle(), WM_SETFONT, reinterpret_cast<WPARAM>(font), TRUE);
  }
};

// --- buttons

DWORD ButtonStyle(const ControlSpec& spec) {
  switch (spec.kind) {
    case ControlKind::ToggleButton:
      return BS_AUTOCHECKBOX | BS_PUSHLIKE | WS_TABSTOP;
    case ControlKind::CheckBox:
      return BS_AUTOCHECKBOX | WS_TABSTOP;
    case ControlKind::RadioButton:
      return BS_AUTORADIOBUTTON | (spec.opensGroup ? WS_GROUP | WS_TABSTOP : 0);
    default:
      return (spec.isDefault ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON) | WS_TABSTOP;
  }
}

// Push and toggle buttons, check boxes and radio buttons.
class ButtonControl final : public WindowsControl {
 public:
  ButtonControl(HWND parent, ControlId newId, const ControlSpec& controlSpec,
                WindowEvents& receiver, WindowsSystem& shared)
      : WindowsControl(newId, controlSpec, receiver, shared) {
    Create(parent, L"BUTTON", ButtonStyle(controlSpec));
  }

  void SetValue(int value) override { Button_SetCheck(Handle(), value ? BST_CHECKED : 0); }

  void HandleCommand(int code) override {
    if (code != BN_CLICKED) return;
    const bool isPush = Kind() == ControlKind::Button;
    const int value = isPush ? 0 : Button_GetCheck(Handle()) == BST_CHECKED;
    if (Kind() == ControlKind::RadioButton && value == 0) return;
    events.OnValue(Id(), value);
  }

  LRESULT CustomDraw(NMCUSTOMDRAW& draw) override {
    if (!system.Colours().isDark || draw.dwDrawStage != CDDS_PREPAINT) return CDRF_DODEFAULT;
    const bool isOn = Button_GetCheck(Handle()) == BST_CHECKED;
    const bool isRound = Kind() == ControlKind::RadioButton;
    if (isRound || Kind() == ControlKind::CheckBox) {
      DrawDarkBox(system, draw, WideOf(TextOf(Handle())), isRound, isOn);
    } else {
      DrawDarkButton(system, draw, WideOf(TextOf(Handle())), isOn);
    }
    return CDRF_SKIPDEFAULT;
  }
};

class ColourControl final : public WindowsControl {
 public:
  ColourControl(HWND parent, ControlId newId, const ControlSpec& controlSpec,
                WindowEvents& receiver, WindowsSystem& shared)
      : WindowsControl(newId, controlSpec, receiver, shared) {
    Create(parent, L"BUTTON", BS_OWNERDRAW | WS_TABSTOP);
  }

  void SetColour(Colour newColour) override {
    colour = newColour;
    InvalidateRect(Handle(), nullptr, FALSE);
  }
  void HandleCommand(int code) override {
    if (code == BN_CLICKED) events.OnValue(Id(), 0);
  }
  // A button of the system's look around the colour.
  void Draw(const DRAWITEMSTRUCT& item) override {
    RECT place = item.rcItem;
    const Look& look = system.Colours();
    const bool isOff = (item.itemState & ODS_DISABLED) != 0;
    FillWith(item.hDC, place, look.window);
    HTHEME theme = look.isDark ? nullptr : OpenThemeData(Handle(), L"BUTTON");
    if (theme) {
      const int state = isOff                           ? PBS_DISABLED
                        : item.itemState & ODS_SELECTED ? PBS_PRESSED
                                                        : PBS_NORMAL;
      DrawThemeBackground(theme, item.hDC, BP_PUSHBUTTON, state, &place, nullptr);
      CloseThemeData(theme);
    } else {
      FillWith(item.hDC, place, item.itemState & ODS_FOCUS ? look.accent : look.line);
      InflateRect(&place, -1, -1);
      FillWith(item.hDC, place, look.field);
    }
    InflateRect(&place, -system.Scaled(5), -system.Scaled(5));
    FillWith(item.hDC, place, look.line);
    InflateRect(&place, -1, -1);
    FillWith(item.hDC, place, isOff ? look.line : colour);
    InflateRect(&place, 3, 3);
    const bool showsFocus = (item.itemState & ODS_FOCUS) && !(item.itemState & ODS_NOFOCUSRECT);
    if (showsFocus) DrawFocusRect(item.hDC, &place);
  }

 private:
  Colour colour;
};

// --- sliders

// The module that an address lies in, or that begins there.
HINSTANCE ModuleAt(void* address) {
  HMODULE module = nullptr;
  GetModuleHandleExW(
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
      static_cast<LPCWSTR>(address), &module);
  return module;
}

// A bitmap of a module's resources; none where there are no bitmaps.
class ResourceBitmap {
 public:
  ResourceBitmap(const SliderBitmaps* of, const std::string SliderBitmaps::*name) {
    if (!of) return;
    bitmap = static_cast<HBITMAP>(LoadImageA(ModuleAt(of->module), (of->*name).c_str(),
                                             IMAGE_BITMAP, 0, 0, LR_CREATEDIBSECTION));
    if (bitmap) GetObjectW(bitmap, sizeof info, &info);
  }
  ~ResourceBitmap() {
    if (bitmap) DeleteObject(bitmap);
  }
  ResourceBitmap(const ResourceBitmap&) = delete;
  ResourceBitmap& operator=(const ResourceBitmap&) = delete;

  explicit operator bool() const { return bitmap != nullptr; }
  int Height() const { return static_cast<int>(info.bmHeight); }

  // Stretched over the place; pixels of the colour in the bitmap's corner are left out.
  void Draw(HDC device, const RECT& place) const {
    HDC memory = CreateCompatibleDC(device);
    HGDIOBJ before = SelectObject(memory, bitmap);
    TransparentBlt(device, place.left, place.top, place.right - place.left,
                   place.bottom - place.top, memory, 0, 0, static_cast<int>(info.bmWidth),
                   static_cast<int>(info.bmHeight), GetPixel(memory, 0, 0));
    SelectObject(memory, before);
    DeleteDC(memory);
  }

 private:
  HBITMAP bitmap = nullptr;
  BITMAP info = {};
};

class SliderControl final : public WindowsControl {
 public:
  SliderControl(HWND parent, ControlId newId, const ControlSpec& controlSpec,
                WindowEvents& receiver, WindowsSystem& shared)
      : WindowsControl(newId, controlSpec, receiver, shared) {
    Create(parent, TRACKBAR_CLASSW, TBS_HORZ | TBS_BOTH | TBS_NOTICKS | WS_TABSTOP);
  }

  // A click beside the thumb moves it by a tenth.
  void SetRange(int least, int greatest) override {
    SendMessageW(Handle(), TBM_SETRANGEMIN, FALSE, least);
    SendMessageW(Handle(), TBM_SETRANGEMAX, TRUE, greatest);
    const int page = (greatest - least) / 10;
    SendMessageW(Handle(), TBM_SETPAGESIZE, 0, page > 1 ? page : 1);
  }
  void SetValue(int value) override { SendMessageW(Handle(), TBM_SETPOS, TRUE, value); }

  void HandleScroll() override {
    events.OnValue(Id(), static_cast<int>(SendMessageW(Handle(), TBM_GETPOS, 0, 0)));
  }

  LRESULT CustomDraw(NMCUSTOMDRAW& draw) override {
    if (draw.dwDrawStage == CDDS_PREPAINT) return CDRF_NOTIFYITEMDRAW;
    if (draw.dwDrawStage != CDDS_ITEMPREPAINT) return CDRF_DODEFAULT;
    if (draw.dwItemSpec == TBCD_CHANNEL) return DrawScale(draw);
    return draw.dwItemSpec == TBCD_THUMB ? DrawThumb(draw) : CDRF_DODEFAULT;
  }

 private:
  LRESULT DrawScale(const NMCUSTOMDRAW& draw) {
    const bool isCentred = spec.look == SliderLook::AroundZero;
    const ResourceBitmap scale(spec.look == SliderLook::Plain ? nullptr : CZNSlider::ScaleBitmaps(),
                               isCentred ? &SliderBitmaps::aroundZero : &SliderBitmaps::fromZero);
    RECT place = draw.rc;
    if (scale) {
      const int middle = (place.top + place.bottom) / 2;
      const int half = system.Scaled(scale.Height()) / 2;
      place.top = middle - half;
      place.bottom = middle + half;
      scale.Draw(draw.hdc, place);
      return CDRF_SKIPDEFAULT;
    }
    if (!system.Colours().isDark) return CDRF_DODEFAULT;
    FillWith(draw.hdc, place, system.Colours().line);
    return CDRF_SKIPDEFAULT;
  }

  LRESULT DrawThumb(const NMCUSTOMDRAW& draw) {
    const ResourceBitmap thumb(CZNSlider::ThumbBitmaps(), &SliderBitmaps::thumb);
    if (thumb && IsWindowEnabled(Handle())) {
      thumb.Draw(draw.hdc, draw.rc);
      return CDRF_SKIPDEFAULT;
    }
    if (!system.Colours().isDark) return CDRF_DODEFAULT;
    const Look& look = system.Colours();
    FillWith(draw.hdc, draw.rc, IsWindowEnabled(Handle()) ? look.accent : look.line);
    return CDRF_SKIPDEFAULT;
  }
};

// --- edits and lists

class EditControl final : public WindowsControl {
 public:
  EditControl(HWND parent, ControlId newId, const ControlSpec& controlSpec, WindowEvents& receiver,
              WindowsSystem& shared)
      : WindowsControl(newId, controlSpec, receiver, shared) {
    Create(parent, L"EDIT", ES_AUTOHSCROLL | WS_TABSTOP, WS_EX_CLIENTEDGE);
  }

  void SetText(const std::string& text) override {
    isQuiet = true;
    WindowsControl::SetText(text);
    isQuiet = false;
  }
  void HandleCommand(int code) override {
    if (code == EN_CHANGE && !isQuiet) events.OnText(Id(), TextOf(Handle()));
  }

 private:
  bool HandleMessage(UINT message, WPARAM wide, LPARAM more, LRESULT& result) override {
    return PaintsDarkFrame(message, wide, more, result);
  }

  bool isQuiet = false;
};

class ChoiceControl final : public WindowsControl {
 public:
  ChoiceControl(HWND parent, ControlId newId, const ControlSpec& controlSpec,
                WindowEvents& receiver, WindowsSystem& shared)
      : WindowsControl(newId, controlSpec, receiver, shared) {
    Create(parent, L"COMBOBOX", CBS_DROPDOWNLIST | WS_VSCROLL | WS_TABSTOP);
  }

  // The height that the system is told is that of the opened list.
  void Place(const Rect& place) override {
    Rect opened = place;
    opened.height += system.Scaled(200);
    WindowsControl::Place(opened);
  }
  void SetItems(const std::vector<std::string>& items) override {
    ComboBox_ResetContent(Handle());
    for (const std::string& item : items) {
      SendMessageW(Handle(), CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(WideOf(item).c_str()));
    }
  }
  void SetValue(int value) override { ComboBox_SetCurSel(Handle(), value); }
  void HandleCommand(int code) override {
    if (code == CBN_SELCHANGE) events.OnValue(Id(), ComboBox_GetCurSel(Handle()));
  }

 private:
  // The system also draws the choice in between; what it drew is drawn over again.
  bool HandleMessage(UINT message, WPARAM, LPARAM, LRESULT& result) override {
    if (!system.Colours().isDark) return false;
    if (message == WM_PAINT) {
      PAINTSTRUCT paint;
      HDC device = BeginPaint(Handle(), &paint);
      DrawDarkCombo(system, Handle(), device, WideOf(TextOf(Handle())));
      EndPaint(Handle(), &paint);
      result = 0;
      return true;
    }
    const bool isDrawn = message == CB_SETCURSEL || message == WM_ENABLE ||
                         message == WM_MOUSELEAVE || message == WM_LBUTTONUP ||
                         message == WM_COMMAND || message == WM_KEYDOWN;
    if (isDrawn) InvalidateRect(Handle(), nullptr, FALSE);
    return false;
  }
};

class ListControl final : public WindowsControl {
 public:
  ListControl(HWND parent, ControlId newId, const ControlSpec& controlSpec, WindowEvents& receiver,
              WindowsSystem& shared)
      : WindowsControl(newId, controlSpec, receiver, shared) {
    Create(parent, L"LISTBOX", LBS_NOTIFY | LBS_NOINTEGRALHEIGHT | WS_VSCROLL | WS_TABSTOP,
           WS_EX_CLIENTEDGE);
  }

  void SetItems(const std::vector<std::string>& items) override {
    ListBox_ResetContent(Handle());
    for (const std::string& item : items) {
      SendMessageW(Handle(), LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(WideOf(item).c_str()));
    }
  }
  void SetValue(int value) override { ListBox_SetCurSel(Handle(), value); }
  void HandleCommand(int code) override {
    if (code == LBN_SELCHANGE) events.OnValue(Id(), ListBox_GetCurSel(Handle()));
  }

 private:
  bool HandleMessage(UINT message, WPARAM wide, LPARAM more, LRESULT& result) override {
    return PaintsDarkFrame(message, wide, more, result);
  }
};

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

// --- keys

struct NamedKey {
  WPARAM code;
  Key key;
};
constexpr NamedKey kKeys[] = {
    {VK_LEFT, Key::Left},     {VK_RIGHT, Key::Right},    {VK_UP, Key::Up},
    {VK_DOWN, Key::Down},     {VK_PRIOR, Key::PageUp},   {VK_NEXT, Key::PageDown},
    {VK_HOME, Key::Home},     {VK_END, Key::End},        {VK_RETURN, Key::Enter},
    {VK_ESCAPE, Key::Escape}, {VK_DELETE, Key::Delete},  {VK_INSERT, Key::Insert},
    {VK_SPACE, Key::Space},   {VK_BACK, Key::Backspace}, {VK_TAB, Key::Tab},
};

KeyEvent WithModifiers() {
  KeyEvent event;
  event.shift = IsDown(VK_SHIFT);
  event.control = IsDown(VK_CONTROL);
  event.alt = IsDown(VK_MENU);
  return event;
}

// What stands on a key in the person's layout: small letters, digits, signs.
char32_t SignOf(WPARAM code) {
  const UINT sign = MapVirtualKeyW(static_cast<UINT>(code), MAPVK_VK_TO_CHAR) & 0x7FFFFFFF;
  return sign >= 'A' && sign <= 'Z' ? sign - 'A' + 'a' : sign;
}

}  // namespace

// A letter comes as a character, with the control key as the key that was pressed.
bool TakeKey(const MSG& message, KeyEvent& event) {
  event = WithModifiers();
  const bool isAltGr = event.control && event.alt;
  if (message.message == WM_CHAR) {
    if (message.wParam < 32 || (event.control && !isAltGr)) return false;
    event.key = message.wParam == ' ' ? Key::Space : Key::Character;
    event.character = static_cast<char32_t>(message.wParam);
    return true;
  }
  if (message.message != WM_KEYDOWN) return false;
  const KeyEvent pressed = PressedKey(message);
  const bool isSign = pressed.key == Key::Character || pressed.key == Key::Space;
  const bool isFunction = pressed.key > Key::F1 && pressed.key <= Key::F12;
  if (isFunction || pressed.key == Key::Tab || pressed.key == Key::Backspace) return false;
  if (isSign && (!event.control || isAltGr)) return false;
  event = pressed;
  return event.key != Key::Other;
}

KeyEvent PressedKey(const MSG& message) {
  KeyEvent event = WithModifiers();
  const WPARAM code = message.wParam;
  for (const NamedKey& named : kKeys) {
    if (named.code == code) event.key = named.key;
  }
  if (code >= VK_F1 && code <= VK_F12) {
    event.key = static_cast<Key>(static_cast<WPARAM>(Key::F1) + (code - VK_F1));
  }
  if (event.key != Key::Other) return event;
  const char32_t sign = SignOf(code);
  const bool isModifier = code == VK_SHIFT || code == VK_CONTROL || code == VK_MENU;
  if (isModifier || sign <= 32 || (event.control && event.alt)) return event;
  event.key = Key::Character;
  event.character = sign;
  return event;
}

// --- WindowsControl

WindowsControl::WindowsControl(ControlId newId, const ControlSpec& controlSpec,
                               WindowEvents& receiver, WindowsSystem& windowsSystem)
    : spec(controlSpec), events(receiver), system(windowsSystem), id(newId) {}

// The name for screen readers is the window's text where that is not shown.
void WindowsControl::Create(HWND parent, const wchar_t* windowClass, DWORD style, DWORD extended) {
  const bool hasCaption = !spec.text.empty() || spec.kind == ControlKind::Edit;
  const std::wstring text = WideOf(hasCaption ? spec.text : spec.name);
  const auto child = reinterpret_cast<HMENU>(static_cast<INT_PTR>(id));
  handle = CreateWindowExW(extended, windowClass, text.c_str(), WS_CHILD | WS_VISIBLE | style, 0, 0,
                           0, 0, parent, child, WindowsSystem::Module(), nullptr);
  if (!handle) return;
  const bool isOwn = spec.kind == ControlKind::Canvas || spec.kind == ControlKind::Slider ||
                     spec.kind == ControlKind::ColourButton;
  if (isOwn) told = std::make_shared<AccessibleContent>(ContentOf(spec));
  SetWindowSubclass(handle, Procedure, 1, reinterpret_cast<DWORD_PTR>(this));
  SetFont();
  ++system.counts.controls;
}

void WindowsControl::SetEnabled(bool enabled) {
  HWND const focus = GetFocus();
  if (!enabled && focus && (focus == handle || IsChild(handle, focus))) {
    HWND const next = GetNextDlgTabItem(GetParent(handle), handle, FALSE);
    if (next && next != handle) SetFocus(next);
  }
  EnableWindow(handle, enabled);
}

void WindowsControl::SetValueText(const std::string& text) {
  const std::wstring wide = WideOf(text);
  if (!told || told->value == wide) return;
  told->value = wide;
  NotifyWinEvent(EVENT_OBJECT_VALUECHANGE, handle, OBJID_CLIENT, CHILDID_SELF);
}

void WindowsControl::SetRows(const std::vector<CanvasRow>& newRows) {
  if (!told) return;
  told->rows = newRows;
  NotifyWinEvent(EVENT_OBJECT_REORDER, handle, OBJID_CLIENT, CHILDID_SELF);
}

WindowsControl::~WindowsControl() {
  if (!handle) return;
  if (told) told->window = nullptr;
  RemoveWindowSubclass(handle, Procedure, 1);
  DestroyWindow(handle);
  --system.counts.controls;
}

void WindowsControl::Place(const Rect& place) {
  SetWindowPos(handle, nullptr, place.x, place.y, place.width, place.height,
               SWP_NOZORDER | SWP_NOACTIVATE);
}

void WindowsControl::SetText(const std::string& text) {
  SetWindowTextW(handle, WideOf(text).c_str());
}

void WindowsControl::SetFont() {
  SendMessageW(handle, WM_SETFONT, reinterpret_cast<WPARAM>(system.Font()), TRUE);
}

bool WindowsControl::PaintsDarkFrame(UINT message, WPARAM wide, LPARAM more, LRESULT& result) {
  if (message != WM_NCPAINT || !system.Colours().isDark) return false;
  result = DefSubclassProc(handle, message, wide, more);
  DrawDarkFrame(system, handle);
  return true;
}

bool WindowsControl::HandleMessage(UINT, WPARAM, LPARAM, LRESULT&) {
  return false;
}

LRESULT CALLBACK WindowsControl::Procedure(HWND window, UINT message, WPARAM wide, LPARAM more,
                                           UINT_PTR, DWORD_PTR data) {
  auto* const self = reinterpret_cast<WindowsControl*>(data);
  LRESULT result = 0;
  if (self->HandleMessage(message, wide, more, result)) return result;
  switch (message) {
    case WM_SETFOCUS:
    case WM_KILLFOCUS:
      result = DefSubclassProc(window, message, wide, more);
      if (self->system.Colours().isDark) RedrawWindow(window, nullptr, nullptr, kWithFrame);
      if (message == WM_SETFOCUS) WindowsWindow::Reveal(window);
      self->events.OnFocus(self->id, message == WM_SETFOCUS);
      return result;
    case WM_MOUSEWHEEL: {
      if (self->Kind() == ControlKind::List) break;
      HWND const parent = GetParent(window);
      const double notches = GET_WHEEL_DELTA_WPARAM(wide) / static_cast<double>(WHEEL_DELTA);
      const bool isUsed = self->events.OnWheel(self->id, notches, GetFocus() == window);
      return isUsed || !IsWindow(parent) ? 0 : SendMessageW(parent, message, wide, more);
    }
    case WM_GETOBJECT:
      if (self->told && static_cast<DWORD>(more) == static_cast<DWORD>(OBJID_CLIENT)) {
        return AnswerWithAccessible(window, self->told, wide);
      }
      break;
    case WM_CONTEXTMENU:
      if (self->Kind() == ControlKind::Edit) break;
      return self->HandleContextMenu(more);
    case WM_LBUTTONDOWN:
      if (self->spec.canDrag && self->DetectDrag(more)) return 0;
      break;
    default:
      break;
  }
  return DefSubclassProc(window, message, wide, more);
}

// The menu key names no place.
LRESULT WindowsControl::HandleContextMenu(LPARAM screenPlace) {
  POINT place = {GET_X_LPARAM(screenPlace), GET_Y_LPARAM(screenPlace)};
  if (screenPlace == -1) {
    place = {0, 0};
  } else {
    ScreenToClient(handle, &place);
  }
  events.OnContextMenu(id, {static_cast<int>(place.x), static_cast<int>(place.y)});
  return 0;
}

// Waits for the mouse to move away or to be let go. Whoever only clicks has clicked then.
bool WindowsControl::DetectDrag(LPARAM clientPlace) {
  POINT place = {GET_X_LPARAM(clientPlace), GET_Y_LPARAM(clientPlace)};
  SetFocus(handle);
  ClientToScreen(handle, &place);
  HWND const window = handle;
  if (DragDetect(window, place)) {
    events.OnDragBegin(id);
  } else if (IsWindow(window)) {
    SendMessageW(window, BM_CLICK, 0, 0);
  }
  return true;
}

std::unique_ptr<WindowsControl> MakeWindowsControl(HWND parent, ControlId id,
                                                   const ControlSpec& spec, WindowEvents& events,
                                                   WindowsSystem& system) {
  switch (spec.kind) {
    case ControlKind::Static:
    case ControlKind::Heading:
      return std::make_unique<TextControl>(parent, id, spec, events, system);
    case ControlKind::Button:
    case ControlKind::ToggleButton:
    case ControlKind::CheckBox:
    case ControlKind::RadioButton:
      return std::make_unique<ButtonControl>(parent, id, spec, events, system);
    case ControlKind::Slider:
      return std::make_unique<SliderControl>(parent, id, spec, events, system);
    case ControlKind::Edit:
      return std::make_unique<EditControl>(parent, id, spec, events, system);
    case ControlKind::ComboBox:
      return std::make_unique<ChoiceControl>(parent, id, spec, events, system);
    case ControlKind::List:
      return std::make_unique<ListControl>(parent, id, spec, events, system);
    case ControlKind::ColourButton:
      return std::make_unique<ColourControl>(parent, id, spec, events, system);
    case ControlKind::Dock:
      return std::make_unique<DockControl>(parent, id, spec, events, system);
    case ControlKind::Canvas:
      break;
  }
  return std::make_unique<CanvasControl>(parent, id, spec, events, system);
}

Size PreferredControlSize(const WindowsSystem& system, ControlKind kind, const std::string& text) {
  const Size bare = system.TextSize(text, kind == ControlKind::Heading);
  const auto with = [&](int width, int height) {
    return Size{bare.width + system.Scaled(width), bare.height + system.Scaled(height)};
  };
  switch (kind) {
    case ControlKind::Static:
    case ControlKind::Heading:
      return with(2, 2);
    case ControlKind::CheckBox:
    case ControlKind::RadioButton:
      return with(22, 6);
    case ControlKind::Slider:
      return {system.Scaled(160), system.Scaled(28)};
    case ControlKind::ColourButton:
      return {system.Scaled(48), system.Scaled(26)};
    case ControlKind::Canvas:
    case ControlKind::Dock:
      return {system.Scaled(32), system.Scaled(32)};
    case ControlKind::ComboBox:
    case ControlKind::List:
      return with(34, 9);
    case ControlKind::Edit:
      return with(14, 9);
    default:
      return with(22, 11);
  }
}

}  // namespace toolkit
