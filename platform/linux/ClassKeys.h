// Where the registry keeps component classes, below the root key for classes: the system's own
// layout.
#pragma once

#include <guiddef.h>

#include <optional>
#include <string>

#include "base/Guid.h"

namespace platform {

inline std::string GuidText(const GUID& id) {
  char text[base::kGuidTextLength + 1];
  base::PrintGuid(id, text);
  return text;
}

inline std::optional<GUID> GuidOf(const std::string& text) {
  GUID id = {};
  const bool valid = text.size() == base::kGuidTextLength && base::ParseGuid(text.c_str(), id);
  return valid ? std::optional<GUID>(id) : std::nullopt;
}

enum class CategoryUse { Implemented, Required };

inline std::string ClassKey(const CLSID& classId) {
  return "CLSID\\" + GuidText(classId);
}

// Holds one key for each category of the class.
inline std::string CategoriesKey(const CLSID& classId, CategoryUse use) {
  const bool implemented = use == CategoryUse::Implemented;
  return ClassKey(classId) + (implemented ? "\\Implemented Categories" : "\\Required Categories");
}

inline constexpr char kCategoriesRoot[] = "Component Categories";

// Holds one key for each language with the description as its value, named by the language's number
// in hexadecimal. (The system has named values there; ours are keys, because a key holds one
// value.)
inline std::string CategoryKey(const CATID& category) {
  std::string key = kCategoriesRoot;
  key += '\\';
  return key += GuidText(category);
}

}  // namespace platform
