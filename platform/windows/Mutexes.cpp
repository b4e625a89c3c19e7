// Named mutexes: the system's.
#include <windows.h>

#include "platform/SystemServices.h"
#include "platform/windows/Handle.h"

namespace platform {
namespace {

class SystemMutex final : public NamedMutex {
 public:
  explicit SystemMutex(Handle opened) : mutex(std::move(opened)) {}

  Wait WaitFor(std::chrono::milliseconds limit) override {
    switch (WaitForSingleObject(mutex.Get(), static_cast<DWORD>(limit.count()))) {
      case WAIT_OBJECT_0:
        return Wait::Held;
      case WAIT_ABANDONED:
        return Wait::Abandoned;
      case WAIT_TIMEOUT:
        return Wait::TimedOut;
      default:
        return Wait::Failed;
    }
  }

  void Release() override { ReleaseMutex(mutex.Get()); }

 private:
  Handle mutex;
};

class SystemMutexesService final : public Mutexes {
 public:
  std::unique_ptr<NamedMutex> Open(const std::string& name) override {
    Handle mutex(CreateMutexA(nullptr, FALSE, name.c_str()));
    return mutex ? std::make_unique<SystemMutex>(std::move(mutex)) : nullptr;
  }
};

}  // namespace

Mutexes& SystemMutexes() {
  static SystemMutexesService mutexes;
  return mutexes;
}

}  // namespace platform
