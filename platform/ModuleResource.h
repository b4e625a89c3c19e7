// Data that a loaded module carries.
#pragma once

#include <wtypes.h>

#include <cstddef>
#include <span>

namespace platform {

// A bitmap of the module, null for the program, without a file head; empty when there is none. It
// lives as long as the module. On Windows a resource, whose name may be a number in the lowest 16
// bits; on Linux the bytes between the symbols NAME_start and NAME_end.
std::span<const BYTE> BitmapOfModule(void* module, const char* name);

}  // namespace platform
