// What screen readers hear of controls that the system does not know: names, roles, values, rows.
#pragma once

#include <windows.h>

#include <memory>
#include <string>
#include <vector>

#include "toolkit/Backend.h"

namespace toolkit {

// The control writes it and readers are told of it, all on the windows' thread. Readers may hold it
// longer than the control lives, which then has no window.
struct AccessibleContent {
  HWND window = nullptr;
  std::wstring name, value;
  long role = 0;
  std::vector<CanvasRow> rows;
};

// `window` is set by AnswerWithAccessible.
AccessibleContent ContentOf(const ControlSpec& spec);

// The answer to WM_GETOBJECT for the client object.
LRESULT AnswerWithAccessible(HWND window, const std::shared_ptr<AccessibleContent>& content,
                             WPARAM wide);

}  // namespace toolkit
