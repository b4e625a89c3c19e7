#include "platform/ModuleResource.h"

#include <windows.h>

namespace platform {

HMODULE ModuleAt(const void* address) {
  HMODULE module = nullptr;
  GetModuleHandleExW(
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
      static_cast<LPCWSTR>(address), &module);
  return module;
}

std::span<const std::byte> FindModuleResource(HMODULE module, const char* name, const char* type) {
  const HRSRC found = FindResourceA(module, name, type);
  const HGLOBAL loaded = found ? LoadResource(module, found) : nullptr;
  const auto* const first = loaded ? static_cast<const std::byte*>(LockResource(loaded)) : nullptr;
  if (!first) return {};
  return {first, SizeofResource(module, found)};
}

std::span<const BYTE> BitmapOfModule(void* module, const char* name) {
  // The number of the kind of resource, in the form that the narrow function takes.
  const auto bytes = FindModuleResource(static_cast<HMODULE>(module), name, MAKEINTRESOURCEA(2));
  return {reinterpret_cast<const BYTE*>(bytes.data()), bytes.size()};
}

}  // namespace platform
