#include "toolkit/Shortcut.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace toolkit {
namespace {

struct KeyName {
  Key key;
  const char* english;
  const char* german;
};
constexpr KeyName kNames[] = {
    {Key::Left, "Left", "Links"},
    {Key::Right, "Right", "Rechts"},
    {Key::Up, "Up", "Oben"},
    {Key::Down, "Down", "Unten"},
    {Key::PageUp, "PgUp", "Bild auf"},
    {Key::PageDown, "PgDn", "Bild ab"},
    {Key::Home, "Home", "Pos1"},
    {Key::End, "End", "Ende"},
    {Key::Tab, "Tab", "Tab"},
    {Key::Enter, "Enter", "Eingabe"},
    {Key::Escape, "Esc", "Esc"},
    {Key::Space, "Space", "Leertaste"},
    {Key::Delete, "Del", "Entf"},
    {Key::Insert, "Ins", "Einfg"},
    {Key::Backspace, "Backspace", "Rücktaste"},
    {Key::F1, "F1", "F1"},
    {Key::F2, "F2", "F2"},
    {Key::F3, "F3", "F3"},
    {Key::F4, "F4", "F4"},
    {Key::F5, "F5", "F5"},
    {Key::F6, "F6", "F6"},
    {Key::F7, "F7", "F7"},
    {Key::F8, "F8", "F8"},
    {Key::F9, "F9", "F9"},
    {Key::F10, "F10", "F10"},
    {Key::F11, "F11", "F11"},
    {Key::F12, "F12", "F12"},
};

struct ModifierName {
  bool KeyEvent::*member;
  const char* english;
  const char* german;
};
constexpr ModifierName kModifiers[] = {{&KeyEvent::control, "Ctrl", "Strg"},
                                       {&KeyEvent::alt, "Alt", "Alt"},
                                       {&KeyEvent::shift, "Shift", "Umschalt"}};

bool IsLetter(char32_t sign) {
  return sign < 128 && std::isalpha(static_cast<int>(sign));
}

char32_t Folded(char32_t sign) {
  return IsLetter(sign) ? static_cast<char32_t>(std::tolower(static_cast<int>(sign))) : sign;
}

// Takes the modifier's words with their "+" off the front.
bool TakeModifier(std::string& words, KeyEvent& shortcut) {
  for (const ModifierName& modifier : kModifiers) {
    const std::string start = std::string(modifier.english) + "+";
    if (!words.starts_with(start)) continue;
    shortcut.*modifier.member = true;
    words.erase(0, start.size());
    return true;
  }
  return false;
}

}  // namespace

KeyEvent ShortcutOf(const std::string& words) {
  KeyEvent shortcut;
  std::string rest = words;
  while (TakeModifier(rest, shortcut)) {
  }
  for (const KeyName& name : kNames) {
    if (rest == name.english) shortcut.key = name.key;
  }
  if (rest.size() == 1 && std::isgraph(static_cast<unsigned char>(rest[0]))) {
    shortcut.key = Key::Character;
    shortcut.character = Folded(static_cast<unsigned char>(rest[0]));
  }
  return shortcut.key == Key::Other ? KeyEvent() : shortcut;
}

std::string ShortcutName(const KeyEvent& shortcut, const std::string& language) {
  const bool isGerman = language == "de";
  std::string words;
  if (shortcut.key == Key::Other) return words;
  for (const ModifierName& modifier : kModifiers) {
    if (!(shortcut.*modifier.member)) continue;
    words += std::string(isGerman ? modifier.german : modifier.english) + "+";
  }
  if (shortcut.key == Key::Character) {
    return words + static_cast<char>(std::toupper(static_cast<int>(shortcut.character)));
  }
  const auto* const name =
      std::find_if(std::begin(kNames), std::end(kNames),
                   [&](const KeyName& candidate) { return candidate.key == shortcut.key; });
  return words + (isGerman ? name->german : name->english);
}

bool IsShortcut(const KeyEvent& pressed, const KeyEvent& shortcut) {
  if (shortcut.key == Key::Other || pressed.key != shortcut.key) return false;
  const bool isSign = shortcut.key == Key::Character;
  const bool countsShift = !isSign || IsLetter(shortcut.character);
  return (!isSign || Folded(pressed.character) == shortcut.character) &&
         pressed.control == shortcut.control && pressed.alt == shortcut.alt &&
         (!countsShift || pressed.shift == shortcut.shift);
}

}  // namespace toolkit
