// Menus: the bar of a window, or one that opens at a place.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/Export.h"
#include "toolkit/Backend.h"

class CZNDialog;

// Entries with what they do. A text is UTF-8 with "&" before its mnemonic; behind a TAB it may name
// a shortcut in English words ("&Open...\tCtrl+O"), which is shown in the person's language and, in
// a window's bar, works wherever the focus is. Windows' thread only.
class FXBOX_API CZNMenu {
 public:
  using Action = std::function<void()>;

  CZNMenu();
  ~CZNMenu();
  CZNMenu(const CZNMenu&) = delete;
  CZNMenu& operator=(const CZNMenu&) = delete;

  // Each gives the entry's number, which all menus below one bar share. An action may change the
  // menu and bury its window.
  int Add(const std::string& text, Action action);
  // An entry with a place for a check mark. The action sets and clears the mark.
  int AddCheck(const std::string& text, Action action, bool isChecked = false);
  // A line between entries.
  void AddSeparator();
  // A menu below this one, which owns it.
  CZNMenu& AddBelow(const std::string& text);
  void Clear();

  // Entries of this menu and of those below it; other numbers do nothing. In the bar of a window
  // the change shows at once.
  void Enable(int entry, bool isEnabled);
  void Check(int entry, bool isChecked);
  bool IsEnabled(int entry) const;
  bool IsChecked(int entry) const;

  // Opens the menu at a place of the window's client area, waits until it is closed and does what
  // was chosen; false when nothing was.
  bool Run(CZNDialog& window, toolkit::Point place);

  // The menu as the window system takes it.
  std::vector<toolkit::MenuEntry> Entries() const;

 private:
  friend class CZNDialog;
  struct Item;

  explicit CZNMenu(CZNMenu& menuAbove);
  Item& AddItem(const std::string& text, Action action);
  int NewNumber() { return above ? above->NewNumber() : ++lastNumber; }
  Item* Find(int entry) const;
  template <class Wanted>
  Item* FindIf(const Wanted& wanted) const;
  void ShowState(const Item& item) const;
  // Does what the entry says; false when there is none, or it is disabled.
  bool Do(int entry) const;
  // The same for the entry whose shortcut was pressed.
  bool DoShortcut(const toolkit::KeyEvent& pressed) const;

  CZNMenu* above = nullptr;
  CZNDialog* shownBy = nullptr;  // as its bar; of the topmost menu
  int lastNumber = 0;
  std::vector<std::unique_ptr<Item>> items;
};
