// Shared objects: third parties' loaded for one call, our own kept.
#include <dlfcn.h>
#include <link.h>

#include <memory>

#include "platform/SystemServices.h"

namespace platform {
namespace {

std::string LoaderMessage() {
  const char* message = dlerror();
  return message ? message : "cannot be loaded";
}

class SharedObjects final : public Modules {
 public:
  std::optional<std::string> Call(const std::filesystem::path& module, const char* name,
                                  int& status) override {
    // A bare file name would be looked for in the system's library folders.
    std::error_code error;
    const std::filesystem::path path = std::filesystem::absolute(module, error);
    if (error) return error.message();
    const auto unload = [](void* handle) { dlclose(handle); };
    const std::unique_ptr<void, decltype(unload)> loaded(
        dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL), unload);
    if (!loaded) return LoaderMessage();
    const auto function = reinterpret_cast<int (*)()>(dlsym(loaded.get(), name));
    if (!function) return LoaderMessage();
    status = function();
    return std::nullopt;
  }

  void Keep(const void* address) override {
    Dl_info info;
    void* extra = nullptr;
    if (!dladdr1(address, &info, &extra, RTLD_DL_LINKMAP) || !extra) return;
    const char* const path = static_cast<const link_map*>(extra)->l_name;
    // The program has no path here. The handle is the reference that is kept.
    if (*path) dlopen(path, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
  }
};

}  // namespace

Modules& SystemModules() {
  static SharedObjects modules;
  return modules;
}

}  // namespace platform
