// The component runtime on a thread that makes or calls components.
#pragma once

#include <objbase.h>

namespace host {

// A thread that has it already, in whatever way, keeps it so.
class ComponentRuntime {
 public:
  ComponentRuntime() : status(CoInitialize(nullptr)) {}
  ~ComponentRuntime() {
    if (SUCCEEDED(status)) CoUninitialize();
  }
  ComponentRuntime(const ComponentRuntime&) = delete;
  ComponentRuntime& operator=(const ComponentRuntime&) = delete;

 private:
  const HRESULT status;
};

}  // namespace host
