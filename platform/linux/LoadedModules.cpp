#include "platform/linux/LoadedModules.h"

#include <dlfcn.h>

#include <map>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "platform/linux/ComponentRuntime.h"

namespace platform {
namespace {

class Module {
 public:
  explicit Module(const std::string& path) : handle(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {}
  ~Module() {
    if (handle) dlclose(handle);
  }
  Module(const Module&) = delete;
  Module& operator=(const Module&) = delete;

  bool IsLoaded() const { return handle != nullptr; }
  GetClassObjectFunction GetClassObject() const {
    return reinterpret_cast<GetClassObjectFunction>(dlsym(handle, "DllGetClassObject"));
  }
  bool CanUnload() const {
    const auto canUnload = reinterpret_cast<HRESULT (*)()>(dlsym(handle, "DllCanUnloadNow"));
    return canUnload && canUnload() == S_OK;
  }

 private:
  void* handle;
};

using ModulePointer = std::shared_ptr<Module>;

// The lock is never held while a module's code runs, its static constructors included: that code
// may come back here. Who asks a module holds a second pointer to it meanwhile. Never destroyed:
// components may outlive every static object.
struct Cache {
  std::mutex lock;
  std::map<std::string, ModulePointer> modules;
};

Cache& Modules() {
  static auto* cache = new Cache;
  return *cache;
}

ModulePointer Find(const std::string& path) {
  const std::lock_guard guard(Modules().lock);
  const auto found = Modules().modules.find(path);
  return found == Modules().modules.end() ? nullptr : found->second;
}

// The module that was kept first, when two threads loaded it at once.
ModulePointer Keep(const std::string& path, const ModulePointer& loaded) {
  const std::lock_guard guard(Modules().lock);
  return Modules().modules.try_emplace(path, loaded).first->second;
}

ModulePointer FindOrLoad(const std::string& path) {
  if (ModulePointer module = Find(path)) return module;
  const auto loaded = std::make_shared<Module>(path);
  return loaded->IsLoaded() ? Keep(path, loaded) : nullptr;
}

std::vector<std::pair<std::string, ModulePointer>> TakeIdle() {
  std::vector<std::pair<std::string, ModulePointer>> idle;
  const std::lock_guard guard(Modules().lock);
  std::erase_if(Modules().modules, [&idle](auto& entry) {
    if (entry.second.use_count() > 1) return false;
    idle.emplace_back(entry.first, std::move(entry.second));
    return true;
  });
  return idle;
}

}  // namespace

HRESULT GetModuleClassObject(const std::string& path, REFCLSID classId, REFIID iid, void** result) {
  const ModulePointer module = FindOrLoad(path);
  if (!module) return CO_E_DLLNOTFOUND;
  const GetClassObjectFunction getClassObject = module->GetClassObject();
  return getClassObject ? getClassObject(classId, iid, result) : CO_E_ERRORINDLL;
}

// A module that another thread loads again meanwhile stays: the loader counts as well.
void UnloadUnusedModules() {
  for (auto& [path, module] : TakeIdle()) {
    if (!module->CanUnload()) Keep(path, module);
  }
}

}  // namespace platform
