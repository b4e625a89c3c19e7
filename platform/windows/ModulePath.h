// The file that a module was loaded from.
#pragma once

#include <windows.h>

#include <filesystem>
#include <string>

namespace platform {

// Of any length; null stands for the running program. Empty on failure.
inline std::filesystem::path ModulePath(HMODULE module) {
  std::wstring path(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length = GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
    if (length < path.size()) {
      path.resize(length);
      return path;
    }
    path.resize(2 * path.size());
  }
}

}  // namespace platform
