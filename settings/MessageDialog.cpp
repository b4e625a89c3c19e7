#include "settings/MessageDialog.h"

#include <string>

#include "platform/Services.h"
#include "settings/TraceLogStd.h"

namespace {

constexpr int kLevel = 5;

const char* ButtonName(int button) {
  constexpr const char* kNames[] = {"OK", "Cancel", "Abort", "Retry", "Ignore", "Yes", "No"};
  return button >= 1 && button <= 7 ? kNames[button - 1] : "unknown";
}

}  // namespace

int ZNMessageBox(const char* text, const char* title, unsigned style) {
  text = text ? text : "";
  title = title ? title : "";
  TraceLog log(kLevel);
  log.Format(kLevel, "MessageBox: Title: %s %s %d", title, text, static_cast<int>(style));
  const int button = platform::CurrentServices().desktop->Ask(text, title, style);
  log.Format(kLevel, "MessageBox: <%s> selected (%d)", ButtonName(button), button);
  return button;
}
