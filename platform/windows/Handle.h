// An open object of the system.
#pragma once

#include <windows.h>

#include <utility>

namespace platform {

// Owns a handle and closes it; null and INVALID_HANDLE_VALUE are none.
class Handle {
 public:
  explicit Handle(HANDLE opened) : handle(opened) {}
  ~Handle() {
    if (*this) CloseHandle(handle);
  }
  Handle(Handle&& other) noexcept : handle(std::exchange(other.handle, nullptr)) {}
  Handle& operator=(Handle&&) = delete;

  explicit operator bool() const { return handle && handle != INVALID_HANDLE_VALUE; }
  HANDLE Get() const { return handle; }

 private:
  HANDLE handle;
};

}  // namespace platform
