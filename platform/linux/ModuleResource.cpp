#include "platform/ModuleResource.h"

#include <dlfcn.h>
#include <link.h>

#include <cstdint>
#include <memory>
#include <string>

namespace platform {
namespace {

struct CloseModule {
  void operator()(void* handle) const { dlclose(handle); }
};
using ModuleHandle = std::unique_ptr<void, CloseModule>;

link_map* MapOf(const void* address) {
  Dl_info info;
  void* extra = nullptr;
  if (!address || dladdr1(address, &info, &extra, RTLD_DL_LINKMAP) == 0) return nullptr;
  return static_cast<link_map*>(extra);
}

// The module that holds the address, or else whose handle it is; null is the program.
ModuleHandle OpenModule(HMODULE module) {
  if (!module) return ModuleHandle(dlopen(nullptr, RTLD_NOW));
  link_map* map = MapOf(module);
  if (!map && dlinfo(module, RTLD_DI_LINKMAP, &map) != 0) return nullptr;
  return ModuleHandle(dlopen(*map->l_name ? map->l_name : nullptr, RTLD_NOW | RTLD_NOLOAD));
}

// Of the module itself: the system's search goes on in those that the module needs.
const std::byte* FindSymbol(const ModuleHandle& module, const std::string& symbol) {
  const auto* const found = static_cast<const std::byte*>(dlsym(module.get(), symbol.c_str()));
  link_map* own = nullptr;
  if (!found || dlinfo(module.get(), RTLD_DI_LINKMAP, &own) != 0) return nullptr;
  return MapOf(found) == own ? found : nullptr;
}

}  // namespace

HMODULE ModuleAt(const void* address) {
  return const_cast<void*>(address);
}

std::span<const std::byte> FindModuleResource(HMODULE module, const char* name, const char*) {
  const ModuleHandle handle = OpenModule(module);
  if (!handle) return {};
  const std::byte* const start = FindSymbol(handle, name + std::string("_start"));
  const std::byte* const end = FindSymbol(handle, name + std::string("_end"));
  if (!start || !end || end < start) return {};
  return {start, end};
}

std::span<const BYTE> BitmapOfModule(void* module, const char* name) {
  if (!name || reinterpret_cast<std::uintptr_t>(name) <= 0xFFFF) return {};
  const auto bytes = FindModuleResource(module, name, nullptr);
  return {reinterpret_cast<const BYTE*>(bytes.data()), bytes.size()};
}

}  // namespace platform
