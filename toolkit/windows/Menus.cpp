#include "toolkit/windows/Menus.h"

#include "toolkit/Shortcut.h"
#include "toolkit/windows/DarkControls.h"
#include "toolkit/windows/WideText.h"

namespace toolkit {
namespace {

// Commands begin where neither controls nor the system's own (IDOK, IDCANCEL) have theirs.
constexpr UINT kFirstCommand = 0x4000;

UINT CommandOf(int entry) {
  return entry ? kFirstCommand + static_cast<UINT>(entry) : 0;
}

constexpr int kMarkWidth = 26;
constexpr int kArrowWidth = 20;
constexpr int kBarPadding = 8;
constexpr int kSeparatorHeight = 7;

// The text of an entry in the font of menus, measured on the screen.
SIZE MeasuredText(const WindowsSystem& system, const std::wstring& text) {
  HDC screen = GetDC(nullptr);
  HGDIOBJ before = SelectObject(screen, system.Font());
  RECT place = {};
  DrawTextW(screen, text.c_str(), -1, &place, DT_CALCRECT | DT_SINGLELINE);
  SelectObject(screen, before);
  ReleaseDC(nullptr, screen);
  return {place.right, place.bottom};
}

void DrawArrow(const WindowsSystem& system, HDC device, const RECT& place, Colour colour) {
  const int x = place.right - system.Scaled(12), y = (place.top + place.bottom) / 2;
  const int unit = system.Scaled(3);
  const POINT corners[] = {{x, y - unit}, {x + unit, y}, {x, y + unit}};
  DrawStroke(device, corners, 3, system.Scaled(1), colour);
}

void DrawSeparator(const WindowsSystem& system, HDC device, const RECT& place) {
  const int y = (place.top + place.bottom) / 2;
  const POINT ends[] = {{place.left + system.Scaled(kMarkWidth), y}, {place.right, y}};
  DrawStroke(device, ends, 2, 1, system.Colours().line);
}

}  // namespace

WindowsMenu::WindowsMenu(const std::vector<MenuEntry>& entries, bool isBar,
                         const WindowsSystem& windowsSystem)
    : system(windowsSystem), menu(isBar ? CreateMenu() : CreatePopupMenu()) {
  Fill(menu, entries, isBar);
}

WindowsMenu::~WindowsMenu() {
  DestroyMenu(menu);
}

void WindowsMenu::Fill(HMENU level, const std::vector<MenuEntry>& entries, bool isBar) {
  for (const MenuEntry& entry : entries) Append(level, entry, isBar);
  if (!system.Colours().isDark) return;
  MENUINFO info = {};
  info.cbSize = sizeof info;
  info.fMask = MIM_BACKGROUND;
  info.hbrBack = system.WindowBrush();
  SetMenuInfo(level, &info);
}

// The text is set for screen readers and mnemonics also where it is drawn here.
void WindowsMenu::Append(HMENU level, const MenuEntry& entry, bool isInBar) {
  const std::wstring text = WideOf(entry.text);
  const std::wstring shortcut = WideOf(ShortcutName(entry.shortcut, SystemLanguage()));
  std::wstring shown = shortcut.empty() ? text : text + L'\t' + shortcut;
  const bool isSeparator = entry.id == 0 && entry.below.empty() && entry.text.empty();
  MENUITEMINFOW item = {};
  item.cbSize = sizeof item;
  item.fMask = MIIM_FTYPE | MIIM_STATE | MIIM_ID | MIIM_STRING;
  item.fType = isSeparator ? MFT_SEPARATOR : MFT_STRING;
  item.fState = (entry.isEnabled ? 0u : MFS_DISABLED) | (entry.isChecked ? MFS_CHECKED : 0u);
  item.wID = CommandOf(entry.id);
  item.dwTypeData = shown.data();
  if (!entry.below.empty()) {
    item.fMask |= MIIM_SUBMENU;
    item.hSubMenu = CreatePopupMenu();
    Fill(item.hSubMenu, entry.below, false);
  }
  if (system.Colours().isDark) {
    drawn.push_back(
        std::make_unique<Drawn>(Drawn{text, shortcut, isInBar, isSeparator, !entry.below.empty()}));
    item.fMask |= MIIM_DATA;
    item.fType |= MFT_OWNERDRAW;
    item.dwItemData = reinterpret_cast<ULONG_PTR>(drawn.back().get());
  }
  InsertMenuItemW(level, static_cast<UINT>(GetMenuItemCount(level)), TRUE, &item);
}

int WindowsMenu::EntryOf(UINT command) {
  return command > kFirstCommand ? static_cast<int>(command - kFirstCommand) : 0;
}

void WindowsMenu::SetState(int entry, bool isEnabled, bool isChecked) {
  const UINT id = CommandOf(entry);
  EnableMenuItem(menu, id, MF_BYCOMMAND | (isEnabled ? MF_ENABLED : MF_GRAYED));
  CheckMenuItem(menu, id, MF_BYCOMMAND | (isChecked ? MF_CHECKED : MF_UNCHECKED));
}

void WindowsMenu::Measure(const WindowsSystem& system, MEASUREITEMSTRUCT& item) {
  const auto& entry = *reinterpret_cast<const Drawn*>(item.itemData);
  const SIZE text = MeasuredText(system, entry.text);
  const SIZE shortcut = entry.shortcut.empty() ? SIZE{} : MeasuredText(system, entry.shortcut);
  const int gap = entry.shortcut.empty() ? 0 : system.Scaled(24);
  const int around =
      entry.isInBar ? system.Scaled(kBarPadding) : system.Scaled(kMarkWidth + kArrowWidth);
  item.itemWidth = static_cast<UINT>(text.cx + gap + shortcut.cx + around);
  item.itemHeight = static_cast<UINT>(entry.isSeparator ? system.Scaled(kSeparatorHeight)
                                                        : text.cy + system.Scaled(8));
}

// The system would draw the arrow of a submenu over it, in its own colour.
void WindowsMenu::Draw(const WindowsSystem& system, const DRAWITEMSTRUCT& item) {
  const auto& entry = *reinterpret_cast<const Drawn*>(item.itemData);
  const Look& look = system.Colours();
  const bool isHot = (item.itemState & (ODS_SELECTED | ODS_HOTLIGHT)) && !entry.isSeparator;
  const bool isOff = (item.itemState & (ODS_DISABLED | ODS_GRAYED)) != 0;
  FillWith(item.hDC, item.rcItem, isHot && !isOff ? look.line : look.window);
  const Colour colour = isOff ? look.line : look.text;
  RECT place = item.rcItem;
  HGDIOBJ before = SelectObject(item.hDC, system.Font());
  SetBkMode(item.hDC, TRANSPARENT);
  SetTextColor(item.hDC, RefOf(colour));
  const UINT how = DT_SINGLELINE | DT_VCENTER | (item.itemState & ODS_NOACCEL ? DT_HIDEPREFIX : 0u);
  if (entry.isSeparator) {
    DrawSeparator(system, item.hDC, place);
  } else if (entry.isInBar) {
    DrawTextW(item.hDC, entry.text.c_str(), -1, &place, how | DT_CENTER);
  } else {
    const POINT mark = {place.left + system.Scaled(9), (place.top + place.bottom) / 2};
    if (item.itemState & ODS_CHECKED) DrawCheck(system, item.hDC, mark, colour);
    if (entry.opensMenu) DrawArrow(system, item.hDC, place, colour);
    place.left += system.Scaled(kMarkWidth);
    place.right -= system.Scaled(kArrowWidth);
    DrawTextW(item.hDC, entry.text.c_str(), -1, &place, how);
    DrawTextW(item.hDC, entry.shortcut.c_str(), -1, &place, how | DT_RIGHT);
  }
  SelectObject(item.hDC, before);
  ExcludeClipRect(item.hDC, item.rcItem.left, item.rcItem.top, item.rcItem.right,
                  item.rcItem.bottom);
}

}  // namespace toolkit
