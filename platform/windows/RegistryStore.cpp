// The registry service: the system's registry, its 64-bit view.
#include <windows.h>

#include <algorithm>

#include "platform/RegistryKey.h"
#include "platform/SystemServices.h"

namespace platform {
namespace {

HKEY RootKey(Hive hive) {
  switch (hive) {
    case Hive::ClassesRoot:
      return HKEY_CLASSES_ROOT;
    case Hive::LocalMachine:
      return HKEY_LOCAL_MACHINE;
    case Hive::CurrentUser:
      return HKEY_CURRENT_USER;
    case Hive::Users:
      break;
  }
  return HKEY_USERS;
}

RegistryResult ResultOf(LSTATUS status) {
  switch (status) {
    case ERROR_SUCCESS:
      return RegistryResult::Done;
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
      return RegistryResult::NotFound;
    case ERROR_ACCESS_DENIED:
      return RegistryResult::Denied;
    default:
      return RegistryResult::Failed;
  }
}

// Lets everybody do everything: a descriptor with an access list that is present and null.
class OpenDescriptor {
 public:
  OpenDescriptor() : descriptor(SystemRegistry().NewOpenDescriptor()) {}
  ~OpenDescriptor() { LocalFree(descriptor); }
  OpenDescriptor(const OpenDescriptor&) = delete;
  OpenDescriptor& operator=(const OpenDescriptor&) = delete;

  SECURITY_ATTRIBUTES Attributes() const { return {sizeof(SECURITY_ATTRIBUTES), descriptor, TRUE}; }

 private:
  void* descriptor;
};

class OpenKey {
 public:
  OpenKey() = default;
  ~OpenKey() {
    if (key) RegCloseKey(key);
  }
  OpenKey(const OpenKey&) = delete;
  OpenKey& operator=(const OpenKey&) = delete;

  LSTATUS Open(Hive hive, const KeyPath& path, REGSAM access) {
    return RegOpenKeyExA(RootKey(hive), JoinKey(path).c_str(), 0, access | KEY_WOW64_64KEY, &key);
  }
  LSTATUS Create(Hive hive, const KeyPath& path, REGSAM access, SECURITY_ATTRIBUTES* security) {
    return RegCreateKeyExA(RootKey(hive), JoinKey(path).c_str(), 0, nullptr,
                           REG_OPTION_NON_VOLATILE, access | KEY_WOW64_64KEY, security, &key,
                           nullptr);
  }
  HKEY Get() const { return key; }

 private:
  HKEY key = nullptr;
};

// The default value of a key, which may grow while it is read.
LSTATUS QueryText(HKEY key, std::string& text) {
  DWORD type = REG_SZ;
  DWORD size = 256;
  LSTATUS status = ERROR_MORE_DATA;
  while (status == ERROR_MORE_DATA) {
    text.resize(size);
    status =
        RegQueryValueExA(key, nullptr, nullptr, &type, reinterpret_cast<BYTE*>(text.data()), &size);
  }
  if (status != ERROR_SUCCESS) return status;
  text.resize(size);
  return type == REG_SZ || type == REG_EXPAND_SZ ? ERROR_SUCCESS : ERROR_INVALID_DATA;
}

// `closing` is 1 to store the closing zero as well, which readers expect though they must not need
// it.
LSTATUS SetText(HKEY key, std::string_view value, std::size_t closing, const char* name = nullptr) {
  const std::string text(ValueText(value));
  return RegSetValueExA(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                        static_cast<DWORD>(text.size() + closing));
}

// A key that is to be written is made; if its place is not there all the same, that is a failure.
RegistryResult ResultOfWriting(LSTATUS status) {
  const RegistryResult result = ResultOf(status);
  return result == RegistryResult::NotFound ? RegistryResult::Failed : result;
}

class SystemRegistryService final : public Registry {
 public:
  std::optional<std::string> Read(Hive hive, std::string_view key) override {
    const std::optional<KeyPath> path = SplitKey(key);
    OpenKey opened;
    if (!path || opened.Open(hive, *path, KEY_QUERY_VALUE) != ERROR_SUCCESS) return std::nullopt;
    std::string text;
    const LSTATUS status = QueryText(opened.Get(), text);
    if (status == ERROR_FILE_NOT_FOUND) return "";  // a key without a value
    if (status != ERROR_SUCCESS) return std::nullopt;
    return std::string(ValueText(text));
  }

  bool Exists(Hive hive, std::string_view key) override {
    const std::optional<KeyPath> path = SplitKey(key);
    OpenKey opened;
    return path && opened.Open(hive, *path, KEY_READ) == ERROR_SUCCESS;
  }

  RegistryResult Write(Hive hive, std::string_view key, std::string_view value) override {
    const std::optional<KeyPath> path = SplitKey(key);
    if (!path) return RegistryResult::Failed;
    OpenKey opened;
    LSTATUS status = opened.Create(hive, *path, KEY_SET_VALUE, nullptr);
    if (status == ERROR_SUCCESS) status = SetText(opened.Get(), value, 1);
    return ResultOfWriting(status);
  }

  RegistryResult WriteNamed(Hive hive, std::string_view key, const char* name,
                            std::string_view value) override {
    const std::optional<KeyPath> path = SplitKey(key);
    if (!path) return RegistryResult::Failed;
    OpenKey opened;
    LSTATUS status = opened.Open(hive, *path, KEY_SET_VALUE);
    if (status == ERROR_SUCCESS) status = SetText(opened.Get(), value, 1, name);
    return ResultOfWriting(status);
  }

  RegistryResult WriteShared(Hive hive, std::string_view key, std::string_view value,
                             bool keepExisting) override {
    const std::optional<KeyPath> path = SplitKey(key);
    if (!path) return RegistryResult::NotMade;
    if (keepExisting && Exists(hive, key)) return RegistryResult::Exists;
    const OpenDescriptor everybody;
    SECURITY_ATTRIBUTES security = everybody.Attributes();
    OpenKey opened;
    if (opened.Create(hive, *path, KEY_WRITE, &security) != ERROR_SUCCESS) {
      return RegistryResult::NotMade;
    }
    return ResultOfWriting(SetText(opened.Get(), value, 0));
  }

  RegistryResult DeleteTree(Hive hive, std::string_view key) override {
    std::optional<KeyPath> path = SplitKey(key);
    if (!path) return RegistryResult::NotFound;
    if (path->empty()) return RegistryResult::Denied;
    const std::string name = path->back();
    path->pop_back();
    OpenKey parent;
    LSTATUS status = parent.Open(hive, *path, KEY_READ | KEY_WRITE);
    if (status == ERROR_SUCCESS) status = RegDeleteTreeA(parent.Get(), name.c_str());
    return ResultOf(status);
  }

  RegistryResult DeleteEmpty(Hive hive, std::string_view key) override {
    const std::optional<KeyPath> path = SplitKey(key);
    if (!path) return RegistryResult::NotFound;
    OpenKey opened;
    LSTATUS status = opened.Open(hive, *path, KEY_READ);
    DWORD keys = 0;
    DWORD values = 0;
    if (status == ERROR_SUCCESS) {
      status = RegQueryInfoKeyA(opened.Get(), nullptr, nullptr, nullptr, &keys, nullptr, nullptr,
                                &values, nullptr, nullptr, nullptr, nullptr);
    }
    if (status != ERROR_SUCCESS) return ResultOf(status);
    if (keys > 0 || values > 0) return RegistryResult::Exists;
    // The system refuses a key that has got others below it meanwhile.
    return ResultOf(RegDeleteKeyExA(RootKey(hive), JoinKey(*path).c_str(), KEY_WOW64_64KEY, 0));
  }

  std::vector<std::string> Subkeys(Hive hive, std::string_view key) override {
    constexpr DWORD kLongestName = 256;
    std::vector<std::string> names;
    const std::optional<KeyPath> path = SplitKey(key);
    OpenKey opened;
    if (!path || opened.Open(hive, *path, KEY_ENUMERATE_SUB_KEYS) != ERROR_SUCCESS) return names;
    for (DWORD index = 0;; ++index) {
      // A name takes up to two bytes a character in some code pages.
      char name[2 * kLongestName];
      DWORD length = sizeof name;
      if (RegEnumKeyExA(opened.Get(), index, name, &length, nullptr, nullptr, nullptr, nullptr) !=
          ERROR_SUCCESS) {
        break;
      }
      names.emplace_back(name, length);
    }
    std::sort(names.begin(), names.end(), NameLess());
    return names;
  }

  // The functions are looked for at run time, since not every system has had them.
  void* NewOpenDescriptor() override {
    const HMODULE library = GetModuleHandleA("ADVAPI32.DLL");
    const auto initialise = FunctionOf<BOOL(WINAPI*)(PSECURITY_DESCRIPTOR, DWORD)>(
        library, "InitializeSecurityDescriptor");
    const auto setList = FunctionOf<BOOL(WINAPI*)(PSECURITY_DESCRIPTOR, BOOL, PACL, BOOL)>(
        library, "SetSecurityDescriptorDacl");
    if (!initialise || !setList) return nullptr;
    void* const descriptor = LocalAlloc(LPTR, sizeof(SECURITY_DESCRIPTOR));
    if (descriptor && initialise(descriptor, SECURITY_DESCRIPTOR_REVISION) &&
        setList(descriptor, TRUE, nullptr, FALSE)) {
      return descriptor;
    }
    LocalFree(descriptor);
    return nullptr;
  }

 private:
  template <class Function>
  static Function FunctionOf(HMODULE library, const char* name) {
    return library
               ? reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)))
               : nullptr;
  }
};

}  // namespace

Registry& SystemRegistry() {
  static SystemRegistryService registry;
  return registry;
}

}  // namespace platform
