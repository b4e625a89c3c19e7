#include "toolkit/windows/System.h"

#include "toolkit/windows/WideText.h"

namespace toolkit {
namespace {

constexpr int kManifest = 2;

Colour ColourOf(COLORREF ref) {
  return {GetRValue(ref), GetGValue(ref), GetBValue(ref)};
}

bool WantsDark() {
  DWORD isLight = 1, size = sizeof isLight;
  RegGetValueW(HKEY_CURRENT_USER,
               L"Software\\Microsoft\\Windows\\CurrentVersion\\Themes\\Personalize",
               L"AppsUseLightTheme", RRF_RT_REG_DWORD, nullptr, &isLight, &size);
  return isLight == 0;
}

Look LookOf(bool isDark) {
  if (isDark) {
    return {true, {32, 32, 32}, {240, 240, 240}, {45, 45, 45}, {100, 100, 100}, {76, 160, 230}};
  }
  return {false,
          ColourOf(GetSysColor(COLOR_3DFACE)),
          ColourOf(GetSysColor(COLOR_WINDOWTEXT)),
          ColourOf(GetSysColor(COLOR_WINDOW)),
          ColourOf(GetSysColor(COLOR_3DSHADOW)),
          ColourOf(GetSysColor(COLOR_HIGHLIGHT))};
}

// The context lives as long as the module: windows keep what they were made with.
HANDLE MakeContext() {
  ACTCTXW context = {};
  context.cbSize = sizeof context;
  context.dwFlags = ACTCTX_FLAG_HMODULE_VALID | ACTCTX_FLAG_RESOURCE_NAME_VALID;
  context.hModule = WindowsSystem::Module();
  context.lpResourceName = MAKEINTRESOURCEW(kManifest);
  return CreateActCtxW(&context);
}

}  // namespace

WindowsSystem::WindowsSystem() {
  Open();
}

WindowsSystem::~WindowsSystem() {
  Close();
}

HINSTANCE WindowsSystem::Module() {
  HMODULE module = nullptr;
  GetModuleHandleExW(
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
      reinterpret_cast<LPCWSTR>(&WantsDark), &module);
  return module;
}

void WindowsSystem::Open() {
  NONCLIENTMETRICSW metrics = {};
  metrics.cbSize = sizeof metrics;
  SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0);
  font = CreateFontIndirectW(&metrics.lfMessageFont);
  metrics.lfMessageFont.lfWeight = FW_BOLD;
  boldFont = CreateFontIndirectW(&metrics.lfMessageFont);
  look = LookOf(WantsDark());
  windowBrush = CreateSolidBrush(RefOf(look.window));
  fieldBrush = CreateSolidBrush(RefOf(look.field));
  dpi = static_cast<int>(GetDpiForSystem());
  counts.fonts += 2;
  counts.drawings += 2;
}

void WindowsSystem::Close() {
  for (HGDIOBJ object :
       {HGDIOBJ(font), HGDIOBJ(boldFont), HGDIOBJ(windowBrush), HGDIOBJ(fieldBrush)}) {
    DeleteObject(object);
  }
  counts.fonts -= 2;
  counts.drawings -= 2;
}

void WindowsSystem::Refresh() {
  Close();
  Open();
}

int WindowsSystem::Scaled(int units) const {
  return MulDiv(units, dpi, 96);
}

Size WindowsSystem::TextSize(const std::string& text, bool isBold) const {
  HDC screen = GetDC(nullptr);
  HGDIOBJ before = SelectObject(screen, isBold ? boldFont : font);
  RECT place = {};
  DrawTextW(screen, WideOf(text.empty() ? " " : text).c_str(), -1, &place, DT_CALCRECT | DT_LEFT);
  SelectObject(screen, before);
  ReleaseDC(nullptr, screen);
  return {text.empty() ? 0 : static_cast<int>(place.right), static_cast<int>(place.bottom)};
}

ThemedControls::ThemedControls() {
  static HANDLE const context = MakeContext();
  isActive = context != INVALID_HANDLE_VALUE && ActivateActCtx(context, &cookie);
}

ThemedControls::~ThemedControls() {
  if (isActive) DeactivateActCtx(0, cookie);
}

}  // namespace toolkit
