#include "toolkit/windows/Controls.h"

#include <oleacc.h>
#include <windowsx.h>

#include <utility>

#include "toolkit/windows/DarkControls.h"
#include "toolkit/windows/WideText.h"
#include "toolkit/windows/WindowsWindow.h"

namespace toolkit {
namespace {

constexpr UINT kWithFrame = RDW_INVALIDATE | RDW_FRAME;

bool IsDown(int key) {
  return GetKeyState(key) < 0;
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
  auto control = MakeSystemControl(parent, id, spec, events, system);
  return control ? std::move(control) : MakeOwnControl(parent, id, spec, events, system);
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
