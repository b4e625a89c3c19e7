// The colours of windows: light or dark ones.
#pragma once

#include "base/Export.h"
#include "toolkit/Backend.h"

// The system's own theme, as long as nobody chooses another one; it is followed while windows are
// open, and CZNDialog::OnLook hears of each change. Windows' thread only.
class FXBOX_API CZNTheme {
 public:
  // For all windows of this process, those that are open too.
  static void Choose(toolkit::ThemeChoice choice);
  static toolkit::ThemeChoice Chosen();
  // The theme in force. Where no windows can be opened, a light one.
  static toolkit::Look Colours();
  static bool IsDark() { return Colours().isDark; }
  // `share` (0 to 1) of the second colour in the first one: 0 is the first.
  static toolkit::Colour Mixed(toolkit::Colour first, toolkit::Colour second, double share);
};
