#include "toolkit/ZNMenu.h"

#include "toolkit/Shortcut.h"
#include "toolkit/ZNDialog.h"

struct CZNMenu::Item {
  toolkit::MenuEntry entry;  // without what lies below
  Action action;
  std::unique_ptr<CZNMenu> below;
};

CZNMenu::CZNMenu() = default;

CZNMenu::CZNMenu(CZNMenu& menuAbove) : above(&menuAbove) {}

CZNMenu::~CZNMenu() = default;

CZNMenu::Item& CZNMenu::AddItem(const std::string& text, Action action) {
  items.push_back(std::make_unique<Item>());
  Item& item = *items.back();
  const std::size_t tab = text.find('\t');
  item.entry.text = text.substr(0, tab);
  if (tab != std::string::npos) item.entry.shortcut = toolkit::ShortcutOf(text.substr(tab + 1));
  item.action = std::move(action);
  return item;
}

int CZNMenu::Add(const std::string& text, Action action) {
  Item& item = AddItem(text, std::move(action));
  return item.entry.id = NewNumber();
}

int CZNMenu::AddCheck(const std::string& text, Action action, bool isChecked) {
  Item& item = AddItem(text, std::move(action));
  item.entry.hasMark = true;
  item.entry.isChecked = isChecked;
  return item.entry.id = NewNumber();
}

void CZNMenu::AddSeparator() {
  AddItem("", nullptr);
}

CZNMenu& CZNMenu::AddBelow(const std::string& text) {
  Item& item = AddItem(text, nullptr);
  item.below.reset(new CZNMenu(*this));
  return *item.below;
}

void CZNMenu::Clear() {
  items.clear();
}

template <class Wanted>
CZNMenu::Item* CZNMenu::FindIf(const Wanted& wanted) const {
  for (const auto& item : items) {
    if (!item->below) {
      if (item->entry.id > 0 && wanted(item->entry)) return item.get();
    } else if (Item* found = item->below->FindIf(wanted)) {
      return found;
    }
  }
  return nullptr;
}

CZNMenu::Item* CZNMenu::Find(int entry) const {
  return FindIf([entry](const toolkit::MenuEntry& candidate) { return candidate.id == entry; });
}

void CZNMenu::Enable(int entry, bool isEnabled) {
  Item* const item = Find(entry);
  if (!item || item->entry.isEnabled == isEnabled) return;
  item->entry.isEnabled = isEnabled;
  ShowState(*item);
}

void CZNMenu::Check(int entry, bool isChecked) {
  Item* const item = Find(entry);
  if (!item || item->entry.isChecked == isChecked) return;
  item->entry.isChecked = isChecked;
  ShowState(*item);
}

bool CZNMenu::IsEnabled(int entry) const {
  const Item* const item = Find(entry);
  return item && item->entry.isEnabled;
}

bool CZNMenu::IsChecked(int entry) const {
  const Item* const item = Find(entry);
  return item && item->entry.isChecked;
}

void CZNMenu::ShowState(const Item& item) const {
  if (above) return above->ShowState(item);
  toolkit::NativeWindow* const window = shownBy ? shownBy->Native() : nullptr;
  if (window) window->SetMenuState(item.entry.id, item.entry.isEnabled, item.entry.isChecked);
}

bool CZNMenu::Do(int entry) const {
  const Item* const item = Find(entry);
  if (!item || !item->entry.isEnabled) return false;
  const Action action = item->action;  // which may do away with the item
  if (action) action();
  return true;
}

bool CZNMenu::DoShortcut(const toolkit::KeyEvent& pressed) const {
  const Item* const item = FindIf([&](const toolkit::MenuEntry& candidate) {
    return toolkit::IsShortcut(pressed, candidate.shortcut);
  });
  return item && Do(item->entry.id);
}

bool CZNMenu::Run(CZNDialog& window, toolkit::Point place) {
  const int chosen = window.Native() ? window.Native()->RunMenu(place, Entries()) : 0;
  return chosen && Do(chosen);
}

std::vector<toolkit::MenuEntry> CZNMenu::Entries() const {
  std::vector<toolkit::MenuEntry> entries;
  for (const auto& item : items) {
    entries.push_back(item->entry);
    if (item->below) entries.back().below = item->below->Entries();
  }
  return entries;
}
