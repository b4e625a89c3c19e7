// Numbers as controls hold them: ranges, steps, and their text for the person.
#pragma once

#include <optional>
#include <string>

#include "base/Export.h"

struct ValueRange {
  double least = 0;
  double greatest = 100;
  double step = 1;
  int decimals = 0;  // shown behind the point

  // Limits to the range and rounds to a whole number of steps from its least value.
  FXBOX_API double Nearest(double value) const;
  FXBOX_API int Positions() const;  // number of steps
  FXBOX_API int PositionOf(double value) const;
  FXBOX_API double ValueAt(int position) const;
};

// With a point and the range's decimals, whatever the process's locale.
FXBOX_API std::string NumberText(double value, int decimals);
// The whole text as a number, with a point or a comma; blanks around it do not count. Nothing for
// anything else.
FXBOX_API std::optional<double> NumberOf(const std::string& text);
