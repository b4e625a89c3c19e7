// What a canvas is to those who do not see it.
#pragma once

#include <optional>
#include <string>

#include "toolkit/Geometry.h"

namespace toolkit {

// The last three only show something: they take no focus.
enum class CanvasRole { Picture, Adjustable, List, Figure, Status, Border };

inline bool TakesFocus(CanvasRole role) {
  return role < CanvasRole::Figure;
}

// A row of a canvas that is a list, as screen readers tell it.
struct CanvasRow {
  std::string name;  // UTF-8
  bool isSelected = false;
  std::optional<bool> isChecked;  // nothing for rows that cannot be switched
  Rect place;                     // pixels of the canvas; may lie outside of what is seen
  bool operator==(const CanvasRow&) const = default;
};

}  // namespace toolkit
