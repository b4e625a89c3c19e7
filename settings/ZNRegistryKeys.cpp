// The operations of ZNRegistry on the registry.
#include <cstdio>
#include <optional>

#include "platform/Services.h"
#include "settings/TextBuffers.h"
#include "settings/ZNRegistry.h"

namespace {

using platform::Hive;
using platform::RegistryResult;
using settings::CopyWhole;
using settings::IsBuffer;

platform::Registry& Keys() {
  return *platform::CurrentServices().registry;
}

std::optional<Hive> HiveOf(HKEY key) {
  if (key == HKEY_CLASSES_ROOT) return Hive::ClassesRoot;
  if (key == HKEY_CURRENT_USER) return Hive::CurrentUser;
  if (key == HKEY_LOCAL_MACHINE) return Hive::LocalMachine;
  if (key == HKEY_USERS) return Hive::Users;
  return std::nullopt;
}

std::string ListItem(const char* key, const char* name, int index) {
  char number[16];
  std::snprintf(number, sizeof number, "_%04d", index);
  return std::string(key) + '\\' + name + number;
}

// Deletes the keys above this one, from below, as long as they hold nothing.
void PruneParents(Hive hive, std::string key) {
  for (;;) {
    const std::size_t last = key.rfind('\\');
    if (last == std::string::npos) return;
    key.resize(last);
    if (key.find('\\') == std::string::npos) return;
    if (Keys().DeleteEmpty(hive, key) != RegistryResult::Done) return;
  }
}

}  // namespace

std::string ZNRegistry::RegistryKey(const char* name) const {
  return "Software\\" + keyPath + name;
}

int ZNRegistry::ReadKey(HKEY hive, const char* name, KvString& out) {
  if (keyPath.empty()) return kRegistryNotInitialised;
  if (!name) return kRegistryWrongArguments;
  const std::optional<Hive> root = HiveOf(hive);
  const std::string key = RegistryKey(name);
  if (!root || !Keys().Exists(*root, key)) return kRegistryKeyMissing;
  const std::optional<std::string> value = Keys().Read(*root, key);
  if (!value) return kRegistryKeyUnreadable;
  out = *value;
  return kRegistryDone;
}

int ZNRegistry::ReadKey(HKEY hive, const char* name, char* buffer, int size) {
  if (!IsBuffer(buffer, size)) return kRegistryWrongArguments;
  KvString value;
  if (const int error = ReadKey(hive, name, value)) return error;
  return CopyWhole(buffer, size, value.View()) ? kRegistryDone : kRegistryBufferTooSmall;
}

int ZNRegistry::WriteKey(HKEY hive, const char* name, const char* value, bool keepExisting) {
  if (keyPath.empty()) return kRegistryNotInitialised;
  if (!name || !value) return kRegistryWrongArguments;
  const std::optional<Hive> root = HiveOf(hive);
  if (!root) return kRegistryKeyNotMade;
  switch (Keys().WriteShared(*root, RegistryKey(name), value, keepExisting)) {
    case RegistryResult::Done:
      return kRegistryDone;
    case RegistryResult::Exists:
      return kRegistryKeyKept;
    case RegistryResult::NotMade:
      return kRegistryKeyNotMade;
    default:
      return kRegistryKeyUnwritable;
  }
}

int ZNRegistry::ReadListItem(HKEY hive, const char* key, const char* name, int index,
                             KvString& out) {
  if (!key || !name) return kRegistryWrongArguments;
  return ReadKey(hive, ListItem(key, name, index).c_str(), out);
}

int ZNRegistry::ReadListItem(HKEY hive, const char* key, const char* name, int index, char* buffer,
                             int size) {
  if (!key || !name) return kRegistryWrongArguments;
  return ReadKey(hive, ListItem(key, name, index).c_str(), buffer, size);
}

int ZNRegistry::AddListItem(HKEY hive, const char* key, const char* name, const char* value) {
  if (!key || !name || !value) return kRegistryWrongArguments;
  KvString item;
  int index = 0;
  for (; ReadListItem(hive, key, name, index, item) == kRegistryDone; ++index) {
    if (item == value) return kRegistryDone;
  }
  return WriteKey(hive, ListItem(key, name, index).c_str(), value, false);
}

int ZNRegistry::RemoveListItem(HKEY hive, const char* key, const char* name, const char* value) {
  if (!key || !name || !value) return kRegistryWrongArguments;
  KvString item;
  int index = 0;
  do {
    if (ReadListItem(hive, key, name, index, item) != kRegistryDone) return kRegistryDone;
    ++index;
  } while (item != value);
  for (; ReadListItem(hive, key, name, index, item) == kRegistryDone; ++index) {
    const std::string below = ListItem(key, name, index - 1);
    if (const int error = WriteKey(hive, below.c_str(), item, false)) return error;
  }
  const std::string last = RegistryKey(ListItem(key, name, index - 1).c_str());
  Keys().DeleteTree(*HiveOf(hive), last);
  PruneParents(*HiveOf(hive), last);
  return kRegistryDone;
}

int ZNRegistry::DeleteAll() {
  if (!initialised) return kRegistryNotInitialised;
  std::string key = RegistryKey("");
  key.pop_back();
  Keys().DeleteTree(Hive::LocalMachine, key);
  PruneParents(Hive::LocalMachine, key);
  for (const std::string& user : Keys().Subkeys(Hive::Users, "")) {
    Keys().DeleteTree(Hive::Users, user + '\\' + key);
  }
  // Where the running user is not among them.
  Keys().DeleteTree(Hive::CurrentUser, key);
  return kRegistryDone;
}

void* ZNRegistry::GetSecurityDescriptorWithNullDacl() {
  return Keys().NewOpenDescriptor();
}
