// Files of settings: the system's private profiles.
#include <windows.h>

#include "platform/PathText.h"
#include "platform/SystemServices.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

// A name without a folder would be looked for in the system's own.
std::string FullName(const fs::path& file) {
  std::error_code error;
  const fs::path full = fs::absolute(file, error);
  return error ? std::string() : PathText(full);
}

// What the system puts into a buffer that is large enough. A list of names ends in two zeros, and
// one more byte is left free when it did not fit.
std::string Query(const fs::path& file, const char* section, const char* key) {
  const std::string name = FullName(file);
  std::string text(256, '\0');
  for (;;) {
    const auto size = static_cast<DWORD>(text.size());
    const DWORD length =
        GetPrivateProfileStringA(section, key, "", text.data(), size, name.c_str());
    if (length + 2 < size) {
      text.resize(length);
      return text;
    }
    text.resize(2 * text.size());
  }
}

std::vector<std::string> Split(std::string_view names) {
  std::vector<std::string> list;
  while (!names.empty()) {
    const std::string_view name = names.substr(0, names.find('\0'));
    if (!name.empty()) list.emplace_back(name);
    names.remove_prefix(std::min(name.size() + 1, names.size()));
  }
  return list;
}

class ProfileService final : public Profiles {
 public:
  std::string Read(const fs::path& file, std::string_view section, std::string_view key) override {
    return Query(file, std::string(section).c_str(), std::string(key).c_str());
  }

  bool Write(const fs::path& file, std::string_view section, std::string_view key,
             std::optional<std::string_view> value) override {
    const std::string text(value.value_or(""));
    return WritePrivateProfileStringA(std::string(section).c_str(), std::string(key).c_str(),
                                      value ? text.c_str() : nullptr, FullName(file).c_str());
  }

  void Flush(const fs::path& file) override {
    WritePrivateProfileStringA(nullptr, nullptr, nullptr, FullName(file).c_str());
  }

  std::vector<std::string> Sections(const fs::path& file) override {
    return Split(Query(file, nullptr, nullptr));
  }

  std::vector<std::string> Keys(const fs::path& file, std::string_view section) override {
    return Split(Query(file, std::string(section).c_str(), nullptr));
  }
};

}  // namespace

Profiles& SystemProfiles() {
  static ProfileService profiles;
  return profiles;
}

}  // namespace platform
