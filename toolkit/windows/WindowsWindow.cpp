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

void SetStateIn(MenuEntry& entry, int id, bool isEnabled, bool isChecked) {
  for (MenuEntry& below : entry.below) SetStateIn(below, id, isEnabled, isChecked);
  if (entry.id != id) return;
  entry.isEnabled = isEnabled;
  entry.isChecked = isChecked;
}

// The title bar, where the system can draw a dark one.
void ShowDarkFrame(HWND window, bool isDark) {
  using SetAttribute = HRESULT(WINAPI*)(HWND, DWORD, LPCVOID, DWORD);
  constexpr DWORD kUseDarkMode = 20;
  static HMODULE const library =
      LoadLibraryExW(L"dwmapi.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
  static const auto set = library ? reinterpret_cast<SetAttribute>(reinterpret_cast<void*>(
                                        GetProcAddress(library, "DwmSetWindowAttribute")))
                                  : nullptr;
  const BOOL wanted = isDark;
  if (set) set(window, kUseDarkMode, &wanted, sizeof wanted);
}

bool IsMenuOpen() {
  GUITHREADINFO info = {};
  info.cbSize = sizeof info;
  constexpr DWORD kInMenu = GUI_INMENUMODE | GUI_POPUPMENUMODE | GUI_SYSTEMMENUMODE;
  return GetGUIThreadInfo(GetCurrentThreadId(), &info) && (info.flags & kInMenu);
}

bool TellsKeys(ControlKind kind) {
  return kind == ControlKind::Slider || kind == ControlKind::Edit || kind == ControlKind::Canvas;
}

bool IsOurs(HWND window) {
  wchar_t name[32] = L"";
  GetClassNameW(window, name, 32);
  return std::wstring_view(name) == kWindowClass;
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
  if (!window) return;
  if (spec.takesFiles || spec.takesObjects) {
    drops = std::make_unique<DropRegistration>(window, spec, events);
  }
  ++system.counts.windows;
  ShowDarkFrame(window, system.Colours().isDark);
  // Marks of focus and mnemonics are shown once the keyboard is used, as the person has set it.
  SendMessageW(window, WM_CHANGEUISTATE, MAKEWPARAM(UIS_INITIALIZE, 0), 0);
}

WindowsWindow::~WindowsWindow() {
  if (!window) return;
  if (host) std::exchange(host, nullptr)->GuestGone();
  drops.reset();
  SetWindowLongPtrW(window, GWLP_USERDATA, 0);
  controls.clear();
  SetMenu(window, nullptr);
  DestroyWindow(window);
  --system.counts.windows;
}

// The nearest one: a window may be docked in another.
WindowsWindow* WindowsWindow::Of(HWND windowOrControl) {
  HWND at = windowOrControl;
  while (at && !IsOurs(at)) at = GetAncestor(at, GA_PARENT);
  return at ? reinterpret_cast<WindowsWindow*>(GetWindowLongPtrW(at, GWLP_USERDATA)) : nullptr;
}

// --- docks

WindowsWindow* WindowsWindow::OfHandle(void* handle) {
  HWND const window = static_cast<HWND>(handle);
  DWORD process = 0;
  if (!window || !GetWindowThreadProcessId(window, &process)) return nullptr;
  return process == GetCurrentProcessId() && IsOurs(window) ? Of(window) : nullptr;
}

bool WindowsWindow::EnterHost(Host* newHost, HWND place) {
  if (IsChild(window, place)) return false;
  const bool isShown = IsVisible();
  freeStyle = GetWindowLongPtrW(window, GWL_STYLE);
  freeOwner = GetWindow(window, GW_OWNER);
  ShowWindow(window, SW_HIDE);
  SetWindowLongPtrW(window, GWL_STYLE, WS_CHILD | WS_CLIPCHILDREN);
  SetParent(window, place);
  host = newHost;
  if (isShown) ShowWindow(window, SW_SHOWNA);
  return true;
}

// The window comes out where it was seen.
void WindowsWindow::LeaveHost() {
  const bool isShown = (GetWindowLongPtrW(window, GWL_STYLE) & WS_VISIBLE) != 0;
  const Point place = Position();
  host = nullptr;
  ShowWindow(window, SW_HIDE);
  SetParent(window, nullptr);
  SetWindowLongPtrW(window, GWL_STYLE, freeStyle & ~static_cast<LONG_PTR>(WS_VISIBLE));
  SetWindowLongPtrW(window, GWLP_HWNDPARENT, reinterpret_cast<LONG_PTR>(freeOwner));
  Move(place);
  SetClientSize(wanted);
  if (isShown) Show(true);
}

void WindowsWindow::PlaceInHost(const Rect& place) {
  SetWindowPos(window, nullptr, place.x, place.y, place.width, place.height,
               SWP_NOZORDER | SWP_NOACTIVATE | SWP_FRAMECHANGED);
}

Size WindowsWindow::WantedSize() const {
  const bool isShown = (GetWindowLongPtrW(window, GWL_STYLE) & WS_VISIBLE) != 0;
  return isShown ? wanted : Size();
}

void WindowsWindow::Reveal(HWND control) {
  const WindowsWindow* const self = Of(control);
  RECT place;
  if (self && self->host && GetWindowRect(control, &place)) self->host->ShowGuestPart(place);
}

WindowsWindow* WindowsWindow::Outer() const {
  return host ? Of(GetAncestor(window, GA_PARENT)) : nullptr;
}

// --- controls

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
  const ControlId id = NextId();
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

ControlId WindowsWindow::Focused() {
  const WindowsControl* const found = ByHandle(GetFocus());
  return found ? found->Id() : 0;
}

// --- the window

void WindowsWindow::SetTitle(const std::string& title) {
  SetWindowTextW(window, WideOf(title).c_str());
}

void WindowsWindow::SetClientSize(Size size) {
  wanted = size;
  if (host) return host->GuestChanged();
  RECT place = {0, 0, size.width, size.height};
  AdjustWindowRectEx(&place, static_cast<DWORD>(GetWindowLongPtrW(window, GWL_STYLE)),
                     GetMenu(window) != nullptr,
                     static_cast<DWORD>(GetWindowLongPtrW(window, GWL_EXSTYLE)));
  SetWindowPos(window, nullptr, 0, 0, place.right - place.left, place.bottom - place.top,
               SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void WindowsWindow::SetMenuBar(const std::vector<MenuEntry>& entries) {
  barEntries = entries;
  ShowMenuBar();
}

// A bar that comes or goes before the window is seen takes no place from the controls.
void WindowsWindow::ShowMenuBar() {
  auto next =
      barEntries.empty() ? nullptr : std::make_unique<WindowsMenu>(barEntries, true, system);
  RECT client = {};
  GetClientRect(window, &client);
  const bool movesControls = !next != !bar && !IsVisible();
  SetMenu(window, next ? next->Handle() : nullptr);
  bar = std::move(next);
  if (movesControls) {
    SetClientSize({static_cast<int>(client.right), static_cast<int>(client.bottom)});
  }
}

void WindowsWindow::SetMenuState(int entry, bool isEnabled, bool isChecked) {
  for (MenuEntry& top : barEntries) SetStateIn(top, entry, isEnabled, isChecked);
  if (bar) bar->SetState(entry, isEnabled, isChecked);
}

// The owner of a docked window is the one that it is docked in.
void WindowsWindow::SetModal(bool isModal) {
  HWND const owner = GetWindow(window, GW_OWNER);
  if (owner) EnableWindow(GetAncestor(owner, GA_ROOT), !isModal);
}

void WindowsWindow::Show(bool activate) {
  ShowWindow(window, activate && !host ? SW_SHOW : SW_SHOWNA);
  if (host) host->GuestChanged();
  if (!activate) return;
  if (!host) SetForegroundWindow(window);
  if (!ByHandle(GetFocus())) SetFocus(GetNextDlgTabItem(window, nullptr, FALSE));
}

void WindowsWindow::Hide() {
  const bool hadFocus = host && IsChild(window, GetFocus());
  ShowWindow(window, SW_HIDE);
  if (hadFocus) SetFocus(TopWindow());
  if (host) host->GuestChanged();
}

bool WindowsWindow::IsVisible() {
  return IsWindowVisible(window);
}

void WindowsWindow::SetOnTop(bool onTop) {
  if (host) return;
  SetWindowPos(window, onTop ? HWND_TOPMOST : HWND_NOTOPMOST, 0, 0, 0, 0,
               SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
}

Point WindowsWindow::Position() {
  RECT place = {};
  GetWindowRect(window, &place);
  return {static_cast<int>(place.left), static_cast<int>(place.top)};
}

void WindowsWindow::Move(Point place) {
  if (host) return;
  SetWindowPos(window, nullptr, place.x, place.y, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

int WindowsWindow::RunMenu(Point place, const std::vector<MenuEntry>& entries) {
  const WindowsMenu menu(entries, false, system);
  POINT corner = {place.x, place.y};
  ClientToScreen(window, &corner);
  const BOOL command = TrackPopupMenu(menu.Handle(), TPM_RETURNCMD | TPM_NONOTIFY | TPM_RIGHTBUTTON,
                                      corner.x, corner.y, 0, window, nullptr);
  return WindowsMenu::EntryOf(static_cast<UINT>(command));
}

std::optional<Colour> WindowsWindow::AskColour(const std::string&, Colour start,
                                               const std::function<void(Colour)>&) {
  return RunColourDialog(TopWindow(), start);
}

std::optional<std::filesystem::path> WindowsWindow::AskFile(
    const std::string& title, bool toSave, const std::filesystem::path& start,
    const std::vector<std::string>& patterns) {
  return RunFileDialog(TopWindow(), title, toSave, start, patterns);
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
    case WM_MEASUREITEM:
    case WM_DRAWITEM:
    case WM_CTLCOLORSTATIC:
    case WM_CTLCOLORBTN:
    case WM_CTLCOLOREDIT:
    case WM_CTLCOLORLISTBOX:
    case WM_ERASEBKGND:
      return HandleDrawing(message, wide, more);
    case DM_GETDEFID:
      return defaultButton ? MAKELRESULT(defaultButton, DC_HASDEFID) : 0;
    default:
      return HandleWindow(handle, message, wide, more);
  }
}

LRESULT WindowsWindow::HandleDrawing(UINT message, WPARAM wide, LPARAM more) {
  if (message == WM_MEASUREITEM) {
    auto& item = *reinterpret_cast<MEASUREITEMSTRUCT*>(more);
    if (item.CtlType == ODT_MENU) WindowsMenu::Measure(system, item);
    return TRUE;
  }
  if (message == WM_DRAWITEM) {
    const auto& item = *reinterpret_cast<DRAWITEMSTRUCT*>(more);
    WindowsControl* const control = item.CtlType == ODT_MENU ? nullptr : ByHandle(item.hwndItem);
    if (item.CtlType == ODT_MENU) WindowsMenu::Draw(system, item);
    if (control) control->Draw(item);
    return TRUE;
  }
  if (message != WM_ERASEBKGND) return ColoursOf(message, reinterpret_cast<HDC>(wide));
  RECT client;
  GetClientRect(window, &client);
  FillRect(reinterpret_cast<HDC>(wide), &client, system.WindowBrush());
  return 1;
}

LRESULT WindowsWindow::HandleWindow(HWND handle, UINT message, WPARAM wide, LPARAM more) {
  switch (message) {
    case WM_ACTIVATE:
      if (RestoreFocus(wide)) return 0;
      break;
    case WM_CLOSE:
      events.OnCloseRequest();
      return 0;
    case WM_SIZE:
      if (wide != SIZE_MINIMIZED) events.OnResized({LOWORD(more), HIWORD(more)});
      return 0;
    case WM_MOVE:
      events.OnMoved();
      return 0;
    case WM_NCPAINT:
    case WM_NCACTIVATE: {
      const LRESULT result = DefWindowProcW(handle, message, wide, more);
      if (bar && system.Colours().isDark) FillMenuBar();
      return result;
    }
    case WM_SYSCOLORCHANGE:
    case WM_THEMECHANGED:
    case WM_SETTINGCHANGE:
      TakeLook(system);
      return 0;
    default:
      if (message == RegisterWindowMessageA("MsgColorsDialogChanged")) events.OnLookChanged();
      break;
  }
  return DefWindowProcW(handle, message, wide, more);
}

// The system leaves the bar behind the last menu, and the line below it, as in a light theme.
void WindowsWindow::FillMenuBar() {
  MENUBARINFO info = {};
  info.cbSize = sizeof info;
  RECT frame;
  if (!GetMenuBarInfo(window, OBJID_MENU, 0, &info) || !GetWindowRect(window, &frame)) return;
  RECT last = info.rcBar;
  last.right = last.left;
  GetMenuItemRect(window, bar->Handle(), static_cast<UINT>(GetMenuItemCount(bar->Handle())) - 1,
                  &last);
  RECT rest = {last.right, info.rcBar.top, info.rcBar.right, info.rcBar.bottom};
  RECT line = {info.rcBar.left, info.rcBar.bottom, info.rcBar.right, info.rcBar.bottom + 1};
  HDC device = GetWindowDC(window);
  for (RECT* place : {&rest, &line}) {
    OffsetRect(place, -frame.left, -frame.top);
    FillRect(device, place, system.WindowBrush());
  }
  ReleaseDC(window, device);
}

// A window that comes back has the focus where it was.
bool WindowsWindow::RestoreFocus(WPARAM activation) {
  if (LOWORD(activation) == WA_INACTIVE) {
    lastFocus = GetFocus();
    return false;
  }
  if (!lastFocus || !IsWindow(lastFocus)) return false;
  SetFocus(lastFocus);
  return true;
}

// Without a control's handle the message comes from the menu, or stands for a key that the system
// has turned into one: the default button's.
LRESULT WindowsWindow::HandleCommand(WPARAM wide, LPARAM more) {
  if (WindowsControl* control = more ? ByHandle(reinterpret_cast<HWND>(more)) : nullptr) {
    control->HandleCommand(HIWORD(wide));
  } else if (const int entry = more == 0 ? WindowsMenu::EntryOf(LOWORD(wide)) : 0) {
    events.OnMenu(entry);
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

// The windows are looked for anew one by one: an event of one may close another.
void WindowsWindow::TakeLook(WindowsSystem& system) {
  if (!system.Refresh()) return;
  std::vector<HWND> windows;
  const auto collect = +[](HWND window, LPARAM data) -> BOOL {
    if (IsOurs(window)) reinterpret_cast<std::vector<HWND>*>(data)->push_back(window);
    return TRUE;
  };
  EnumThreadWindows(GetCurrentThreadId(), collect, reinterpret_cast<LPARAM>(&windows));
  for (HWND const top : std::vector(windows)) {
    EnumChildWindows(top, collect, reinterpret_cast<LPARAM>(&windows));  // those in docks
  }
  for (HWND window : windows) {
    if (WindowsWindow* self = IsWindow(window) ? Of(window) : nullptr) self->ShowLook();
  }
}

void WindowsWindow::ShowLook() {
  for (const auto& control : controls) control->SetFont();
  ShowMenuBar();
  ShowDarkFrame(window, system.Colours().isDark);
  RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_ALLCHILDREN);
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

bool WindowsWindow::TellShortcut(const MSG& message) {
  if (message.message != WM_KEYDOWN && message.message != WM_SYSKEYDOWN) return false;
  const KeyEvent event = PressedKey(message);
  if (event.key == Key::Other || events.KeepsKey(event)) return false;
  WindowsWindow* const outer = Outer();
  return events.OnShortcut(event) || (outer && outer->events.OnShortcut(event));
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
  if (!self || IsMenuOpen()) return false;
  HWND const window = self->window;
  const bool isUsed = self->TellShortcut(message) || (IsWindow(window) && self->TellKey(message));
  if (isUsed || !IsWindow(window)) return true;
  return IsDialogMessageW(self->TopWindow(), &message) != FALSE;
}

}  // namespace toolkit
