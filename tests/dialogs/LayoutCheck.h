// Whether a window's controls have the place that they need.
#pragma once

#include <string>
#include <vector>

#include "toolkit/fake/FakeBackend.h"

namespace testing_support {

inline bool Overlap(const toolkit::Rect& a, const toolkit::Rect& b) {
  return a.x < b.Right() && b.x < a.Right() && a.y < b.Bottom() && b.y < a.Bottom();
}

inline bool ShowsText(toolkit::ControlKind kind) {
  using toolkit::ControlKind;
  return kind == ControlKind::Static || kind == ControlKind::Heading ||
         kind == ControlKind::CheckBox || kind == ControlKind::RadioButton ||
         kind == ControlKind::Button || kind == ControlKind::ToggleButton;
}

// What is wrong, one line each: texts that are cut, by the measure of the backend; controls that
// lie outside the window or over each other; a window that is larger than `most`.
inline std::vector<std::string> LayoutFaults(toolkit::FakeWindow& window, toolkit::Backend& backend,
                                             toolkit::Size most) {
  std::vector<std::string> faults;
  std::vector<toolkit::Rect> places;
  const toolkit::Size client = window.client;
  if (client.width > most.width || client.height > most.height) faults.push_back("too large");
  for (toolkit::ControlId id = 1; id <= window.ControlCount(); ++id) {
    const toolkit::FakeControl& control = window.At(id);
    const std::string name = control.spec.name + control.text;
    const toolkit::Rect& place = control.place;
    const toolkit::Size wanted = backend.PreferredSize(control.spec.kind, control.text);
    const bool isCut = place.width < wanted.width || place.height < wanted.height;
    if (ShowsText(control.spec.kind) && isCut) faults.push_back("cut: " + name);
    for (const std::string& item : control.items) {
      const int needed = backend.PreferredSize(control.spec.kind, item).width;
      if (place.width < needed) faults.push_back("cut: " + item + " in " + name);
    }
    const bool isInside = place.x >= 0 && place.y >= 0 && place.Right() <= client.width &&
                          place.Bottom() <= client.height;
    if (!isInside || place.width < 1 || place.height < 1) faults.push_back("outside: " + name);
    if (!control.isVisible) continue;
    for (const toolkit::Rect& other : places) {
      if (Overlap(place, other)) faults.push_back("over another one: " + name);
    }
    places.push_back(place);
  }
  return faults;
}

}  // namespace testing_support
