// Data that a loaded module carries.
#pragma once

#include <wtypes.h>

#include <cstddef>
#include <span>

namespace platform {

// The module that holds this address, as the functions below take it; null where there is none.
HMODULE ModuleAt(const void* address);

// The data of this name and type; empty when the module, null for the program, has none. They live
// as long as the module. On Windows a resource; on Linux the bytes between the symbols NAME_start
// and NAME_end, and `module` is a handle of dlopen or any address in the module.
std::span<const std::byte> FindModuleResource(HMODULE module, const char* name, const char* type);

// The same for a bitmap without a file head. On Windows its name may be a number in the lowest 16
// bits.
std::span<const BYTE> BitmapOfModule(void* module, const char* name);

}  // namespace platform
