#include "toolkit/windows/WindowsWindow.h"

#include <ole2.h>

#include "toolkit/windows/SystemDialogs.h"
#include "toolkit/windows/WideText.h"

namespace toolkit {
namespace {

constexpr wchar_t kWindowClass[] = L"FxboxWindow4";

DWORD StyleOf(const WindowSpec& spec) {
  return WS_CLIPCHILDREN | (spec.isTool ? WS_POPUP | WS_CAPTION | WS_SYSMENU : WS_OVERLAPPEDWINDOW);
}

DWORD ExtendedStyleOf(const WindowSpec& spec) {
  return WS_EX_CONTROLPARENT | (spec.isOnTop ? WS_EX_TOPMOST : 0u);
}

HMENU MenuOf(const std::vector<MenuEntry>& entries, HMENU menu) {
  for (const MenuEntry& entry : entries) {
    const std::wstring text = WideOf(entry.text);
    if (!entry.below.empty()) {
      HMENU below = MenuOf(entry.below, CreatePopupMenu());
      AppendMenuW(menu, MF_POPUP, reinterpret_cast<UINT_PTR>(below), text.c_str());
    } else if (entry.id == 0) {
      AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
    } else {
      const UINT flags = (entry.isEnabled ? 0u : MF_GRAYED) | (entry.isChecked ? MF_CHECKED : 0u);
      AppendMenuW(menu, MF_STRING | flags, static_cast<UINT_PTR>(entry.id), text.c_str());
    }
  }
  return menu;
}

bool TellsKeys(ControlKind kind) {
  return kind == ControlKind::Slider || kind == ControlKind::Edit || kind == ControlKind::Canvas;
}

}  // namespace

void WindowsWindow::RegisterClasses() {
  WNDCLASSEXW window = {};
  window.cbSize = sizeof window;
  window.lpfnWndProc = Procedure;
  window.hInstance = WindowsSystem::Module();
  window.hCursor = LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_ARROW));
  window.lpszClassName = kWindowClass;
  RegisterClassExW(&window);
  window.lpfnWndProc = DefWindowProcW;
  window.style = CS_DBLCLKS;
  window.lpszClassName = kCanvasClass;
  RegisterClassExW(&window);
}

void WindowsWindow::UnregisterClasses() {
  UnregisterClassW(kWindowClass, WindowsSystem::Module());
  UnregisterClassW(kCanvasClass, WindowsSystem::Module());
}

WindowsWindow::WindowsWindow(const WindowSpec& spec, WindowEvents& receiver,
                             WindowsSystem& windowsSystem)
    : events(receiver), system(windowsSystem) {
  const ThemedControls themed;
  window =
      CreateWindowExW(ExtendedStyleOf(spec), kWindowClass, WideOf(spec.title).c_str(),
                      StyleOf(spec), CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT,
                      static_cast<HWND>(spec.owner), nullptr, WindowsSystem::Module(), this);
  if (window) ++system.counts.windows;
}

WindowsWindow::~WindowsWindow() {
  if (!window) return;
  SetWindowLongPtrW(window, GWLP_USERDATA, 0);
  controls.clear();
  if (HMENU menu = GetMenu(window)) DestroyMenu(menu);
  DestroyWindow(window);
  --system.counts.windows;
}

WindowsWindow* WindowsWindow::Of(HWND windowOrControl) {
  HWND const top = GetAncestor(windowOrControl, GA_ROOT);
  wchar_t name[32] = L"";
  GetClassNameW(top, name, 32);
  if (std::wstring_view(name) != kWindowClass) return nullptr;
  return reinterpret_cast<WindowsWindow*>(GetWindowLongPtrW(top, GWLP_USERDATA));
}

// --- controls

WindowsControl* WindowsWindow::Find(ControlId control) const {
  const bool exists = control >= 1 && static_cast<std::size_t>(control) <= controls.size();
  return exists ? controls[static_cast<std::size_t>(control) - 1].get() : nullptr;
}

// A part of a combo box counts as the combo box.
WindowsControl* WindowsWindow::ByHandle(HWND handle) const {
  for (const auto& control : controls) {
    if (control->Handle() == handle || IsChild(control->Handle(), handle)) return control.get();
  }
  return nullptr;
}

// The control behind a group of radio buttons ends it.
ControlId WindowsWindow::Add(const ControlSpec& spec) {
  const ThemedControls themed;
  const auto id = static_cast<ControlId>(controls.size()) + 1;
  controls.push_back(MakeWindowsControl(window, id, spec, events, system));
  HWND const handle = controls.back()->Handle();
  const bool isRadio = spec.kind == ControlKind::RadioButton;
  if (wasRadio && !isRadio) {
    SetWindowLongPtrW(handle, GWL_STYLE, GetWindowLongPtrW(handle, GWL_STYLE) | WS_GROUP);
  }
  wasRadio = isRadio;
  SetWindowPos(handle, HWND_BOTTOM, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
  if (spec.isDefault) defaultButton = id;
  return id;
}

void WindowsWindow::Place(ControlId control, const Rect& place) {
  if (WindowsControl* found = Find(control)) found->Place(place);
}

void WindowsWindow::SetText(ControlId control, const std::string& text) {
  if (WindowsControl* found = Find(control)) found->SetText(text);
}

void WindowsWindow::SetRange(ControlId slider, int least, int greatest) {
  if (WindowsControl* found = Find(slider)) found->SetRange(least, greatest);
}

void WindowsWindow::SetValue(ControlId control, int value) {
  if (WindowsControl* found = Find(control)) found->SetValue(value);
}

void WindowsWindow::SetItems(ControlId control, const std::vector<std::string>& items) {
  if (WindowsControl* found = Find(control)) found->SetItems(items);
}

void WindowsWindow::SetColour(ControlId colourButton, Colour colour) {
  if (WindowsControl* found = Find(colourButton)) found->SetColour(colour);
}

void WindowsWindow::SetEnabled(ControlId control, bool enabled) {
  if (const WindowsControl* found = Find(control)) EnableWindow(found->Handle(), enabled);
}

void WindowsWindow::SetVisible(ControlId control, bool visible) {
  const WindowsControl* const found = Find(control);
  if (found) ShowWindow(found->Handle(), visible ? SW_SHOWNA : SW_HIDE);
}

void WindowsWindow::SetBubble(ControlId control, const std::string& text) {
  const WindowsControl* const found = Find(control);
  if (!found) return;
  if (!bubbles) {
    const ThemedControls themed;
    bubbles = CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr, WS_POPUP | TTS_NOPREFIX, 0,
                              0, 0, 0, window, nullptr, WindowsSystem::Module(), nullptr);
  }
  TTTOOLINFOW tool = {};
  tool.cbSize = sizeof tool;
  tool.uFlags = TTF_IDISHWND | TTF_SUBCLASS;
  tool.hwnd = window;
  tool.uId = reinterpret_cast<UINT_PTR>(found->Handle());
  SendMessageW(bubbles, TTM_DELTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
  std::wstring wide = WideOf(text);
  tool.lpszText = wide.data();
  if (!text.empty()) SendMessageW(bubbles, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
}

void WindowsWindow::Focus(ControlId control) {
  if (const WindowsControl* found = Find(control)) SetFocus(found->Handle());
}

ControlId WindowsWindow::Focused() {
  const WindowsControl* const found = ByHandle(GetFocus());
  return found ? found->Id() : 0;
}

void WindowsWindow::SelectAll(ControlId edit) {
  if (const WindowsControl* found = Find(edit)) SendMessageW(found->Handle(), EM_SETSEL, 0, -1);
}

void WindowsWindow::Redraw(ControlId canvas) {
  if (const WindowsControl* found = Find(canvas)) InvalidateRect(found->Handle(), nullptr, FALSE);
}

// --- the window

void WindowsWindow::SetTitle(const std::string& title) {
  SetWindowTextW(window, WideOf(title).c_str());
}

void WindowsWindow::SetClientSize(Size size) {
  RECT place = {0, 0, size.width, size.height};
  AdjustWindowRectEx(&place, static_cast<DWORD>(GetWindowLongPtrW(window, GWL_STYLE)),
                     GetMenu(window) != nullptr,
                     static_cast<DWORD>(GetWindowLongPtrW(window, GWL_EXSTYLE)));
  SetWindowPos(window, nullptr, 0, 0, place.right - place.left, place.bottom - place.top,
               SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void WindowsWindow::SetMenuBar(const std::vector<MenuEntry>& entries) {
  HMENU const before = GetMenu(window);
  SetMenu(window, entries.empty() ? nullptr : MenuOf(entries, CreateMenu()));
  if (before) DestroyMenu(before);
}

void WindowsWindow::Show(bool activate) {
  ShowWindow(window, activate ? SW_SHOW : SW_SHOWNA);
  if (!activate) return;
  SetForegroundWindow(window);
  if (!ByHandle(GetFocus())) SetFocus(GetNextDlgTabItem(window, nullptr, FALSE));
}

void WindowsWindow::Hide() {
  ShowWindow(window, SW_HIDE);
}

bool WindowsWindow::IsVisible() {
  return IsWindowVisible(window);
}

void WindowsWindow::SetOnTop(bool onTop) {
  SetWindowPos(window, onTop ? HWND_TOPMOST : HWND_NOTOPMOST, 0, 0, 0, 0,
               SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
}

Point WindowsWindow::Position() {
  RECT place = {};
  GetWindowRect(window, &place);
  return {static_cast<int>(place.left), static_cast<int>(place.top)};
}

void WindowsWindow::Move(Point place) {
  SetWindowPos(window, nullptr, place.x, place.y, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

int WindowsWindow::RunMenu(Point place, const std::vector<MenuEntry>& entries) {
  HMENU menu = MenuOf(entries, CreatePopupMenu());
  POINT corner = {place.x, place.y};
  ClientToScreen(window, &corner);
  const int chosen = TrackPopupMenu(menu, TPM_RETURNCMD | TPM_NONOTIFY | TPM_RIGHTBUTTON, corner.x,
                                    corner.y, 0, window, nullptr);
  DestroyMenu(menu);
  return chosen;
}

std::optional<Colour> WindowsWindow::AskColour(const std::string&, Colour start,
                                               const std::function<void(Colour)>&) {
  return RunColourDialog(window, start);
}

std::optional<std::filesystem::path> WindowsWindow::AskFile(
    const std::string& title, bool toSave, const std::filesystem::path& start,
    const std::vector<std::string>& patterns) {
  return RunFileDialog(window, title, toSave, start, patterns);
}

DragEnd WindowsWindow::Drag(IDataObject* object, IDropSource* source, std::uint32_t allowed,
                            std::uint32_t& effect) {
  DWORD given = 0;
  const HRESULT status = DoDragDrop(object, source, allowed, &given);
  effect = given;
  if (status == DRAGDROP_S_DROP) return DragEnd::Dropped;
  return status == DRAGDROP_S_CANCEL ? DragEnd::Cancelled : DragEnd::Failed;
}

Rect WindowsWindow::OnScreen(ControlId control) {
  const WindowsControl* const found = Find(control);
  RECT place = {};
  if (found) GetWindowRect(found->Handle(), &place);
  return {static_cast<int>(place.left), static_cast<int>(place.top),
          static_cast<int>(place.right - place.left), static_cast<int>(place.bottom - place.top)};
}

bool WindowsWindow::SaveImage(const std::filesystem::path& file) {
  return SaveWindowImage(window, file);
}

// --- messages

LRESULT CALLBACK WindowsWindow::Procedure(HWND handle, UINT message, WPARAM wide, LPARAM more) {
  if (message == WM_NCCREATE) {
    const auto* const create = reinterpret_cast<CREATESTRUCTW*>(more);
    SetWindowLongPtrW(handle, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(create->lpCreateParams));
  }
  auto* const self = reinterpret_cast<WindowsWindow*>(GetWindowLongPtrW(handle, GWLP_USERDATA));
  if (!self || !self->window) return DefWindowProcW(handle, message, wide, more);
  return self->Handle(handle, message, wide, more);
}

LRESULT WindowsWindow::Handle(HWND handle, UINT message, WPARAM wide, LPARAM more) {
  switch (message) {
    case WM_COMMAND:
      return HandleCommand(wide, more);
    case WM_HSCROLL:
      if (WindowsControl* control = ByHandle(reinterpret_cast<HWND>(more))) control->HandleScroll();
      return 0;
    case WM_NOTIFY:
      return HandleNotice(*reinterpret_cast<NMHDR*>(more), more);
    case WM_DRAWITEM: {
      const auto& item = *reinterpret_cast<DRAWITEMSTRUCT*>(more);
      if (WindowsControl* control = ByHandle(item.hwndItem)) control->Draw(item);
      return TRUE;
    }
    case WM_CTLCOLORSTATIC:
    case WM_CTLCOLORBTN:
    case WM_CTLCOLOREDIT:
    case WM_CTLCOLORLISTBOX:
      return ColoursOf(message, reinterpret_cast<HDC>(wide));
    case WM_ERASEBKGND: {
      RECT client;
      GetClientRect(handle, &client);
      FillRect(reinterpret_cast<HDC>(wide), &client, system.WindowBrush());
      return 1;
    }
    case WM_ACTIVATE:
      if (LOWORD(wide) == WA_INACTIVE) {
        lastFocus = GetFocus();
      } else if (lastFocus && IsWindow(lastFocus)) {
        SetFocus(lastFocus);
        return 0;
      }
      break;
    case DM_GETDEFID:
      return defaultButton ? MAKELRESULT(defaultButton, DC_HASDEFID) : 0;
    case WM_CLOSE:
      events.OnCloseRequest();
      return 0;
    case WM_SIZE:
      if (wide != SIZE_MINIMIZED) events.OnResized({LOWORD(more), HIWORD(more)});
      return 0;
    case WM_MOVE:
      events.OnMoved();
      return 0;
    case WM_SYSCOLORCHANGE:
    case WM_THEMECHANGED:
    case WM_SETTINGCHANGE:
      TakeLook();
      return 0;
    default:
      if (message == RegisterWindowMessageA("MsgColorsDialogChanged")) events.OnLookChanged();
      break;
  }
  return DefWindowProcW(handle, message, wide, more);
}

// Without a control's handle the message comes from the menu, or stands for a key that the system
// has turned into one: the default button's.
LRESULT WindowsWindow::HandleCommand(WPARAM wide, LPARAM more) {
  if (WindowsControl* control = more ? ByHandle(reinterpret_cast<HWND>(more)) : nullptr) {
    control->HandleCommand(HIWORD(wide));
  } else if (GetMenu(window) && HIWORD(wide) == 0 && LOWORD(wide) > IDCANCEL) {
    events.OnMenu(LOWORD(wide));
  }
  return 0;
}

LRESULT WindowsWindow::HandleNotice(const NMHDR& notice, LPARAM more) {
  if (notice.code != static_cast<UINT>(NM_CUSTOMDRAW)) return 0;
  WindowsControl* const control = ByHandle(notice.hwndFrom);
  return control ? control->CustomDraw(*reinterpret_cast<NMCUSTOMDRAW*>(more)) : 0;
}

LRESULT WindowsWindow::ColoursOf(UINT message, HDC device) {
  const bool isField = message == WM_CTLCOLOREDIT || message == WM_CTLCOLORLISTBOX;
  const Look& look = system.Colours();
  SetTextColor(device, RefOf(look.text));
  SetBkColor(device, RefOf(isField ? look.field : look.window));
  return reinterpret_cast<LRESULT>(isField ? system.FieldBrush() : system.WindowBrush());
}

void WindowsWindow::TakeLook() {
  system.Refresh();
  for (const auto& control : controls) control->SetFont();
  InvalidateRect(window, nullptr, TRUE);
  events.OnLookChanged();
}

// --- keys

// Keys that the system's controls need themselves.
bool WindowsWindow::WantsItself(const WindowsControl& control, Key key) {
  if (control.Kind() == ControlKind::ComboBox &&
      SendMessageW(control.Handle(), CB_GETDROPPEDSTATE, 0, 0)) {
    return true;
  }
  const bool isList =
      control.Kind() == ControlKind::ComboBox || control.Kind() == ControlKind::List;
  if (isList) return key != Key::Escape && key != Key::Enter && key != Key::F1;
  return key != Key::Escape && key != Key::F1 && key != Key::Character && key != Key::Delete &&
         key != Key::Insert;
}

bool WindowsWindow::TellKey(const MSG& message) {
  KeyEvent event;
  if (!TakeKey(message, event)) return false;
  const WindowsControl* const control = ByHandle(message.hwnd);
  if (control && TellsKeys(control->Kind())) return events.OnKey(control->Id(), event);
  if (control && WantsItself(*control, event.key)) return false;
  return events.OnKey(0, event);
}

bool WindowsWindow::TakeMessage(MSG& message) {
  if (message.message < WM_KEYFIRST || message.message > WM_KEYLAST) return false;
  WindowsWindow* const self = Of(message.hwnd);
  if (!self) return false;
  HWND const window = self->window;
  const bool isUsed = self->TellKey(message);
  if (isUsed || !IsWindow(window)) return true;
  return IsDialogMessageW(window, &message) != FALSE;
}

}  // namespace toolkit
