// Key paths and key names: the rules that all registry stores share.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Services.h"

namespace platform {

// "HKEY_CLASSES_ROOT" and so on.
const char* HiveName(Hive hive);

// Orders key names without regard to the case of ASCII letters, as if they were upper case. All
// other bytes count as they are.
struct NameLess {
  using is_transparent = void;
  bool operator()(std::string_view a, std::string_view b) const;
};

bool SameName(std::string_view a, std::string_view b);

// The names of a path, from the root key down. Empty names, as a backslash at either end makes
// them, are left out, so an empty path is the root key itself. Nothing when the path holds a zero
// byte, which no store can keep.
using KeyPath = std::vector<std::string>;
std::optional<KeyPath> SplitKey(std::string_view key);
std::string JoinKey(const KeyPath& path);

// A value ends at its first zero byte.
std::string_view ValueText(std::string_view value);

}  // namespace platform
