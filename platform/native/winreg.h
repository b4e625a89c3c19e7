// Stand-in for the system header of the same name: the root keys of the registry.
#pragma once

#include <cstdint>

struct HKEY__;
using HKEY = HKEY__*;

// Compared only, never followed.
#define HKEY_CLASSES_ROOT (reinterpret_cast<HKEY>(std::uintptr_t{0x80000000}))
#define HKEY_CURRENT_USER (reinterpret_cast<HKEY>(std::uintptr_t{0x80000001}))
#define HKEY_LOCAL_MACHINE (reinterpret_cast<HKEY>(std::uintptr_t{0x80000002}))
#define HKEY_USERS (reinterpret_cast<HKEY>(std::uintptr_t{0x80000003}))
