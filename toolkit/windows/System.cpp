#include "toolkit/windows/System.h"

#include "toolkit/windows/WideText.h"

namespace toolkit {
namespace {

constexpr int kManifest = 2;

Colour ColourOf(COLORREF ref) {
  return {GetRValue(ref), GetGValue(ref), GetBValue(ref)};
}

bool SystemIsDark() {
  DWORD isLight = 1, size = sizeof isLight;
  RegGetValueW(HKEY_CURRENT_USER,
               L"Software\\Microsoft\\Windows\\CurrentVersion\\Themes\\Personalize",
               L"AppsUseLightTheme", RRF_RT_REG_DWORD, nullptr, &isLight, &size);
  return isLight == 0;
}

// Whoever needs strong contrasts has chosen the colours himself.
bool IsHighContrast() {
  HIGHCONTRASTW contrast = {};
  contrast.cbSize = sizeof contrast;
  return SystemParametersInfoW(SPI_GETHIGHCONTRAST, sizeof contrast, &contrast, 0) &&
         (contrast.dwFlags & HCF_HIGHCONTRASTON);
}

Look SystemLook() {
  return {false,
          ColourOf(GetSysColor(COLOR_3DFACE)),
          ColourOf(GetSysColor(COLOR_WINDOWTEXT)),
          ColourOf(GetSysColor(COLOR_WINDOW)),
          ColourOf(GetSysColor(COLOR_3DSHADOW)),
          ColourOf(GetSysColor(COLOR_HIGHLIGHT))};
}

Look LookOf(ThemeChoice choice) {
  const bool isDark = choice == ThemeChoice::System ? SystemIsDark() : choice == ThemeChoice::Dark;
  if (!isDark || IsHighContrast()) return SystemLook();
  return {true, {32, 32, 32}, {240, 240, 240}, {45, 45, 45}, {100, 100, 100}, {76, 160, 230}};
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
      reinterpret_cast<LPCWSTR>(&SystemIsDark), &module);
  return module;
}

WindowsSystem::Setting WindowsSystem::CurrentSetting() const {
  NONCLIENTMETRICSW metrics = {};
  metrics.cbSize = sizeof metrics;
  SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0);
  return {metrics.lfMessageFont, LookOf(choice), static_cast<int>(GetDpiForSystem())};
}

bool WindowsSystem::AreEqual(const Setting& one, const Setting& other) {
  const LOGFONTW &first = one.font, &second = other.font;
  return one.look == other.look && one.dpi == other.dpi && first.lfHeight == second.lfHeight &&
         first.lfWeight == second.lfWeight && first.lfItalic == second.lfItalic &&
         std::wstring_view(first.lfFaceName) == second.lfFaceName;
}

void WindowsSystem::Open() {
  setting = CurrentSetting();
  LOGFONTW bold = setting.font;
  bold.lfWeight = FW_BOLD;
  font = CreateFontIndirectW(&setting.font);
  boldFont = CreateFontIndirectW(&bold);
  windowBrush = CreateSolidBrush(RefOf(setting.look.window));
  fieldBrush = CreateSolidBrush(RefOf(setting.look.field));
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

bool WindowsSystem::Refresh() {
  if (AreEqual(setting, CurrentSetting())) return false;
  Close();
  Open();
  return true;
}

int WindowsSystem::Scaled(int units) const {
  return MulDiv(units, setting.dpi, 96);
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

std::string SystemLanguage() {
  wchar_t name[16] = L"";
  GetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_SISO639LANGNAME, name, 16);
  const std::string language = Utf8Of(name);
  return language.empty() ? "en" : language;
}

void FillWith(HDC device, const RECT& place, Colour colour) {
  HBRUSH brush = CreateSolidBrush(RefOf(colour));
  FillRect(device, &place, brush);
  DeleteObject(brush);
}

ThemedControls::ThemedControls() {
  static HANDLE const context = MakeContext();
  isActive = context != INVALID_HANDLE_VALUE && ActivateActCtx(context, &cookie);
}

ThemedControls::~ThemedControls() {
  if (isActive) DeactivateActCtx(0, cookie);
}

}  // namespace toolkit
