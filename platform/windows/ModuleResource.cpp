#include "platform/ModuleResource.h"

#include <windows.h>

namespace platform {

std::span<const BYTE> BitmapOfModule(void* module, const char* name) {
  const auto from = static_cast<HMODULE>(module);
  // The number of the kind of resource, in the form that the narrow function takes.
  const HRSRC found = FindResourceA(from, name, MAKEINTRESOURCEA(2));
  const HGLOBAL loaded = found ? LoadResource(from, found) : nullptr;
  const auto* const first = loaded ? static_cast<const BYTE*>(LockResource(loaded)) : nullptr;
  if (!first) return {};
  return {first, SizeofResource(from, found)};
}

}  // namespace platform
