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
  const Look& Colours() const { return look; }
  int Scaled(int units) const;
  // Pixels of one text in the font of the controls, mnemonics not counted.
  Size TextSize(const std::string& text, bool isBold = false) const;
  // Takes theme, font and scale anew.
  void Refresh();

  BackendCounts counts;

 private:
  void Open();
  void Close();

  HFONT font = nullptr, boldFont = nullptr;
  HBRUSH windowBrush = nullptr, fieldBrush = nullptr;
  Look look;
  int dpi = 96;
};

inline COLORREF RefOf(Colour colour) {
  return RGB(colour.red, colour.green, colour.blue);
}

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
