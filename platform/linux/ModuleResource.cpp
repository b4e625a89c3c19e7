#include "platform/ModuleResource.h"

#include <dlfcn.h>

#include <cstdint>
#include <string>

namespace platform {

std::span<const BYTE> BitmapOfModule(void* module, const char* name) {
  if (!name || reinterpret_cast<std::uintptr_t>(name) <= 0xFFFF) return {};
  void* const from = module ? module : RTLD_DEFAULT;
  const auto* const start =
      static_cast<const BYTE*>(dlsym(from, (name + std::string("_start")).c_str()));
  const auto* const end =
      static_cast<const BYTE*>(dlsym(from, (name + std::string("_end")).c_str()));
  if (!start || !end ||
      reinterpret_cast<std::uintptr_t>(end) < reinterpret_cast<std::uintptr_t>(start))
    return {};
  return {start, end};
}

}  // namespace platform
