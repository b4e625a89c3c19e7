// The user's folders, as the environment names them.
#pragma once

#include <cstdlib>
#include <filesystem>

namespace platform {

// Empty where the variable holds no absolute path.
inline std::filesystem::path AbsolutePathFrom(const char* variable) {
  const char* text = std::getenv(variable);
  return text && *text == '/' ? std::filesystem::path(text) : std::filesystem::path();
}

// What the variable says, else the folder below the user's home; empty where neither is known.
inline std::filesystem::path FolderOfUser(const char* variable, const char* belowHome) {
  const std::filesystem::path folder = AbsolutePathFrom(variable);
  if (!folder.empty()) return folder;
  const std::filesystem::path home = AbsolutePathFrom("HOME");
  return home.empty() ? home : home / belowHome;
}

}  // namespace platform
