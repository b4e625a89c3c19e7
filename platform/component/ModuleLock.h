// The count of what keeps the module loaded.
#pragma once

#include "base/Export.h"

namespace platform {

// While one lives, the module says that it cannot be unloaded. Every component object holds one,
// and LockServer makes and ends one by hand. Thread-safe.
class FXBOX_API ModuleLock {
 public:
  ModuleLock() { Add(); }
  ~ModuleLock() { Remove(); }
  ModuleLock(const ModuleLock&) = delete;
  ModuleLock& operator=(const ModuleLock&) = delete;

  // What making and ending one does. Each Add wants a Remove.
  static void Add();
  static void Remove();
  // Whether the module is in use: what DllCanUnloadNow answers by.
  static bool AnyHeld();
};

}  // namespace platform
