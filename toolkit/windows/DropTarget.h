// Takes what is dragged over a window and dropped on it.
#pragma once

#include <windows.h>
// behind windows.h
#include <ole2.h>

#include "platform/component/ComPtr.h"
#include "toolkit/Backend.h"

namespace toolkit {

// Lives as long as the window, which it has registered for.
class DropRegistration {
 public:
  DropRegistration(HWND target, const WindowSpec& spec, WindowEvents& events);
  ~DropRegistration();
  DropRegistration(const DropRegistration&) = delete;
  DropRegistration& operator=(const DropRegistration&) = delete;

 private:
  HWND window;
};

}  // namespace toolkit
