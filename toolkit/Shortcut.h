// Keys that stand for a menu entry, as words: "Ctrl+Shift+S", "F5", "Del", "Ctrl++".
#pragma once

#include <string>

#include "toolkit/Events.h"

namespace toolkit {

// No key (Key::Other) where the words, which are English, name none.
KeyEvent ShortcutOf(const std::string& words);
// The words for people; `language` is "de" or another one, which gets English.
std::string ShortcutName(const KeyEvent& shortcut, const std::string& language);
// Whether a pressed key is that of the shortcut. Letters count without case; other signs without
// the shift key, which some keyboards need for them.
bool IsShortcut(const KeyEvent& pressed, const KeyEvent& shortcut);

}  // namespace toolkit
