// DLLs: third parties' loaded for one call, our own kept.
#include <windows.h>

#include "platform/SystemServices.h"
#include "platform/windows/Text.h"

namespace platform {
namespace {

class LoadedModule {
 public:
  // Its own folder is searched for what it needs, which takes a full path with backslashes.
  explicit LoadedModule(std::filesystem::path path)
      : module(LoadLibraryExW(path.make_preferred().c_str(), nullptr,
                              LOAD_WITH_ALTERED_SEARCH_PATH)) {}
  ~LoadedModule() {
    if (module) FreeLibrary(module);
  }
  LoadedModule(const LoadedModule&) = delete;
  LoadedModule& operator=(const LoadedModule&) = delete;

  HMODULE Get() const { return module; }

 private:
  HMODULE module;
};

class Libraries final : public Modules {
 public:
  std::optional<std::string> Call(const std::filesystem::path& module, const char* name,
                                  int& status) override {
    using Function = HRESULT(STDAPICALLTYPE*)();
    std::error_code error;
    const std::filesystem::path path = std::filesystem::absolute(module, error);
    if (error) return error.message();
    const LoadedModule loaded(path);
    if (!loaded.Get()) return ReasonOf(GetLastError());
    const auto function =
        reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(loaded.Get(), name)));
    if (!function) return ReasonOf(GetLastError());
    status = function();
    return std::nullopt;
  }

  void Keep(const void* address) override {
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                       static_cast<const wchar_t*>(address), &module);
  }
};

}  // namespace

Modules& SystemModules() {
  static Libraries modules;
  return modules;
}

}  // namespace platform
