// The component runtime on a thread that makes or calls components.
#pragma once

#include <objbase.h>

namespace program {

class ComponentRuntime {
 public:
  ComponentRuntime() { CoInitialize(nullptr); }
  ~ComponentRuntime() { CoUninitialize(); }
  ComponentRuntime(const ComponentRuntime&) = delete;
  ComponentRuntime& operator=(const ComponentRuntime&) = delete;
};

}  // namespace program
