// Menus of the system. In a dark theme, which the system's own menus do not know, they are drawn
// here.
#pragma once

#include <windows.h>

#include <memory>
#include <string>
#include <vector>

#include "toolkit/windows/System.h"

namespace toolkit {

class WindowsMenu {
 public:
  // A window's bar, or a menu that pops up. The brushes of the system at this time have to live as
  // long.
  WindowsMenu(const std::vector<MenuEntry>& entries, bool isBar,
              const WindowsSystem& windowsSystem);
  ~WindowsMenu();
  WindowsMenu(const WindowsMenu&) = delete;
  WindowsMenu& operator=(const WindowsMenu&) = delete;

  HMENU Handle() const { return menu; }
  void SetState(int entry, bool isEnabled, bool isChecked);
  // The entry of a chosen menu command; 0 for commands that are none of a menu.
  static int EntryOf(UINT command);

  // WM_MEASUREITEM and WM_DRAWITEM of menus that are drawn here.
  static void Measure(const WindowsSystem& system, MEASUREITEMSTRUCT& item);
  static void Draw(const WindowsSystem& system, const DRAWITEMSTRUCT& item);

 private:
  // What is drawn of an entry; the system hands it back.
  struct Drawn {
    std::wstring text, shortcut;
    bool isInBar = false, isSeparator = false, opensMenu = false;
  };
  void Fill(HMENU level, const std::vector<MenuEntry>& entries, bool isBar);
  void Append(HMENU level, const MenuEntry& entry, bool isInBar);

  const WindowsSystem& system;
  HMENU menu;
  std::vector<std::unique_ptr<Drawn>> drawn;
};

}  // namespace toolkit
