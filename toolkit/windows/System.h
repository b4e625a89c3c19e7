// What all windows of this backend share: fonts, colours, scale, counters.
#pragma once

#include <windows.h>

#include "toolkit/Backend.h"

namespace toolkit {

class WindowsSystem {
 public:
  WindowsSystem();
  ~WindowsSystem();
  WindowsSystem(const WindowsSystem&) = delete;
  WindowsSystem& operator=(const WindowsSystem&) = delete;

  // The module that this code lies in: the DLL, or the program.
  static HINSTANCE Module();

  HFONT Font() const { return font; }
  HFONT BoldFont() const { return boldFont; }
  HBRUSH WindowBrush() const { return windowBrush; }
  HBRUSH FieldBrush() const { return fieldBrush; }
  const Look& Colours() const { return setting.look; }
  int Scaled(int units) const;
  // Pixels of one text in the font of the controls, mnemonics not counted.
  Size TextSize(const std::string& text, bool isBold = false) const;
  // Takes theme, font and scale anew; false when all is as it was. Windows show the old fonts and
  // brushes, which are gone, until they are given the new ones.
  bool Refresh();
  // The next Refresh takes this theme.
  void Choose(ThemeChoice newChoice) { choice = newChoice; }

  BackendCounts counts;

 private:
  void Open();
  void Close();

  struct Setting {
    LOGFONTW font = {};
    Look look;
    int dpi = 96;
  };
  Setting CurrentSetting() const;
  static bool AreEqual(const Setting& one, const Setting& other);

  ThemeChoice choice = ThemeChoice::System;
  Setting setting;
  HFONT font = nullptr, boldFont = nullptr;
  HBRUSH windowBrush = nullptr, fieldBrush = nullptr;
};

// Two small letters: "de", "en".
std::string SystemLanguage();

inline COLORREF RefOf(Colour colour) {
  return RGB(colour.red, colour.green, colour.blue);
}

void FillWith(HDC device, const RECT& place, Colour colour);

// Makes the themed controls known to what is created while it lives.
class ThemedControls {
 public:
  ThemedControls();
  ~ThemedControls();
  ThemedControls(const ThemedControls&) = delete;
  ThemedControls& operator=(const ThemedControls&) = delete;

 private:
  ULONG_PTR cookie = 0;
  bool isActive = false;
};

}  // namespace toolkit
