#include "platform/RegistryKey.h"

#include <algorithm>

namespace platform {
namespace {

unsigned char Folded(char c) {
  const bool lower = c >= 'a' && c <= 'z';
  return static_cast<unsigned char>(lower ? c - 'a' + 'A' : c);
}

}  // namespace

const char* HiveName(Hive hive) {
  switch (hive) {
    case Hive::ClassesRoot:
      return "HKEY_CLASSES_ROOT";
    case Hive::LocalMachine:
      return "HKEY_LOCAL_MACHINE";
    case Hive::CurrentUser:
      return "HKEY_CURRENT_USER";
    case Hive::Users:
      break;
  }
  return "HKEY_USERS";
}

bool NameLess::operator()(std::string_view a, std::string_view b) const {
  return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                      [](char x, char y) { return Folded(x) < Folded(y); });
}

bool SameName(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return Folded(x) == Folded(y); });
}

std::optional<KeyPath> SplitKey(std::string_view key) {
  if (key.find('\0') != std::string_view::npos) return std::nullopt;
  KeyPath path;
  while (!key.empty()) {
    const std::string_view name = key.substr(0, key.find('\\'));
    if (!name.empty()) path.emplace_back(name);
    key.remove_prefix(std::min(name.size() + 1, key.size()));
  }
  return path;
}

std::string JoinKey(const KeyPath& path) {
  std::string key;
  for (const std::string& name : path) {
    if (!key.empty()) key += '\\';
    key += name;
  }
  return key;
}

std::string_view ValueText(std::string_view value) {
  return value.substr(0, value.find('\0'));
}

}  // namespace platform
