// The registry service: a folder tree below the user's configuration.
//
//   $XDG_CONFIG_HOME/fxbox4/registry/HKEY_CLASSES_ROOT/CLSID/{...}/ProgID/.value
//
// A key is a folder, its default value the file .value in it. Names of our own start with a dot and
// key folders never do. A change holds the lock file exclusively, a reader shared. Still every step
// is one rename, so that a process that is killed in the middle leaves whole keys behind.
#include <fcntl.h>
#include <sys/file.h>

#include <algorithm>
#include <array>

#include "base/Guid.h"
#include "platform/RegistryKey.h"
#include "platform/SystemServices.h"
#include "platform/linux/Descriptor.h"
#include "platform/linux/Environment.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

constexpr char kValueFile[] = ".value";
constexpr char kNewValueFile[] = ".value.new";
constexpr char kNewKeyFolder[] = ".new";
constexpr char kOldKeyFolder[] = ".old";
constexpr char kLockFile[] = ".lock";

// Empty when the environment names no place.
fs::path StoreFolder() {
  const fs::path configuration = FolderOfUser("XDG_CONFIG_HOME", ".config");
  return configuration.empty() ? configuration : configuration / "fxbox4" / "registry";
}

RegistryResult ResultOf(const std::error_code& error) {
  if (!error) return RegistryResult::Done;
  switch (error.value()) {
    case ENOENT:
      return RegistryResult::NotFound;
    case EACCES:
    case EPERM:
    case EROFS:
      return RegistryResult::Denied;
    default:
      return RegistryResult::Failed;
  }
}

// A key that is to be written is made; if its place is not there all the same, that is a failure.
RegistryResult ResultOfWriting(const std::error_code& error) {
  const RegistryResult result = ResultOf(error);
  return result == RegistryResult::NotFound ? RegistryResult::Failed : result;
}

std::string EscapedName(std::string_view name) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string escaped;
  for (std::size_t i = 0; i < name.size(); ++i) {
    const auto byte = static_cast<unsigned char>(name[i]);
    const bool special = byte < 0x20 || byte == 0x7F || byte == '/' || byte == '%';
    if (special || (byte == '.' && i == 0)) {
      escaped += {'%', kDigits[byte >> 4], kDigits[byte & 15]};
    } else {
      escaped += name[i];
    }
  }
  return escaped;
}

std::string UnescapedName(std::string_view escaped) {
  std::string name;
  for (std::size_t i = 0; i < escaped.size(); ++i) {
    const bool complete = escaped[i] == '%' && i + 2 < escaped.size();
    const int high = complete ? base::HexDigit(escaped[i + 1]) : -1;
    const int low = complete ? base::HexDigit(escaped[i + 2]) : -1;
    if (high < 0 || low < 0) {
      name += escaped[i];
    } else {
      name += static_cast<char>(high << 4 | low);
      i += 2;
    }
  }
  return name;
}

// Calls `visit` with the folder of each key directly below until it says false.
template <class Visit>
void VisitSubkeys(const fs::path& folder, Visit visit) {
  std::error_code error;
  fs::directory_iterator entry(folder, error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    std::error_code ignored;
    const bool isKey = entry->path().filename().native()[0] != '.' && entry->is_directory(ignored);
    if (isKey && !visit(entry->path())) return;
  }
}

std::string KeyName(const fs::path& folder) {
  return UnescapedName(folder.filename().native());
}

// The folder of the key directly below with this name, in whatever case; where there is none, the
// folder that it would get.
fs::path SubkeyFolder(const fs::path& parent, const std::string& name) {
  fs::path folder = parent / EscapedName(name);
  std::error_code ignored;
  if (fs::is_directory(folder, ignored)) return folder;
  VisitSubkeys(parent, [&](const fs::path& sibling) {
    if (!SameName(KeyName(sibling), name)) return true;
    folder = sibling;
    return false;
  });
  return folder;
}

fs::path KeyFolder(const fs::path& store, Hive hive, const KeyPath& path) {
  fs::path folder = store / HiveName(hive);
  for (const std::string& name : path) folder = SubkeyFolder(folder, name);
  return folder;
}

std::error_code WriteDurably(const fs::path& file, std::string_view bytes) {
  const Descriptor descriptor(open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
  if (!descriptor) return LastError();
  if (const int error = WriteAll(descriptor.Get(), bytes)) return {error, std::generic_category()};
  return fsync(descriptor.Get()) == 0 ? std::error_code() : LastError();
}

std::error_code ReadAll(const fs::path& file, std::string& bytes) {
  const Descriptor descriptor(open(file.c_str(), O_RDONLY | O_CLOEXEC));
  if (!descriptor) return LastError();
  std::array<char, 4096> part;
  for (;;) {
    const ssize_t count = read(descriptor.Get(), part.data(), part.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return LastError();
    if (count == 0) return {};
    bytes.append(part.data(), static_cast<std::size_t>(count));
  }
}

std::error_code PutValue(const fs::path& folder, std::string_view value) {
  std::error_code error = WriteDurably(folder / kNewValueFile, value);
  if (!error) fs::rename(folder / kNewValueFile, folder / kValueFile, error);
  return error;
}

// Lets the key appear together with its value.
std::error_code MakeKey(const fs::path& store, const fs::path& folder, std::string_view value) {
  const fs::path made = store / kNewKeyFolder;
  std::error_code error;
  fs::remove_all(made, error);  // left by a process that was killed
  if (!error) fs::create_directories(folder.parent_path(), error);
  if (!error) fs::create_directory(made, error);
  if (!error) error = PutValue(made, value);
  if (!error) fs::rename(made, folder, error);
  return error;
}

// Holds the store's lock, between processes as between threads.
class StoreLock {
 public:
  enum class Kind { Reading, Writing };

  StoreLock(const fs::path& store, Kind kind)
      : file(open((store / kLockFile).c_str(),
                  O_CLOEXEC | (kind == Kind::Writing ? O_RDWR | O_CREAT : O_RDONLY), 0666)) {
    if (!file) {
      error = LastError();
      return;
    }
    while (flock(file.Get(), kind == Kind::Writing ? LOCK_EX : LOCK_SH) != 0) {
      if (errno == EINTR) continue;
      error = LastError();
      return;
    }
  }
  // Unlocked by hand: a child process that was forked meanwhile has the file open as well.
  ~StoreLock() {
    if (file) flock(file.Get(), LOCK_UN);
  }
  StoreLock(const StoreLock&) = delete;
  StoreLock& operator=(const StoreLock&) = delete;

  // Set when the lock is not held. A reader goes on without: a store without the file has no
  // writer, and one that cannot be locked can still be read.
  const std::error_code& Error() const { return error; }

 private:
  Descriptor file;
  std::error_code error;
};

class RegistryStore final : public Registry {
 public:
  std::optional<std::string> Read(Hive hive, std::string_view key) override {
    const std::optional<KeyPath> path = SplitKey(key);
    const fs::path store = StoreFolder();
    if (!path || store.empty()) return std::nullopt;
    const StoreLock lock(store, StoreLock::Kind::Reading);
    const fs::path folder = KeyFolder(store, hive, *path);
    std::error_code ignored;
    const bool exists = path->empty() || fs::is_directory(folder, ignored);
    std::string value;
    const std::error_code error = ReadAll(folder / kValueFile, value);
    const bool noValue = error.value() == ENOENT;
    if (!exists || (error && !noValue)) return std::nullopt;
    return std::string(ValueText(value));
  }

  bool Exists(Hive hive, std::string_view key) override { return Read(hive, key).has_value(); }

  RegistryResult Write(Hive hive, std::string_view key, std::string_view value) override {
    bool wasThere = false;
    return Put(hive, key, value, false, wasThere);
  }

  RegistryResult WriteNamed(Hive, std::string_view, const char*, std::string_view) override {
    return RegistryResult::Done;
  }

  // The store is the user's own: there is nobody to be let in.
  RegistryResult WriteShared(Hive hive, std::string_view key, std::string_view value,
                             bool keepExisting) override {
    bool wasThere = false;
    const RegistryResult result = Put(hive, key, value, keepExisting, wasThere);
    return wasThere || result == RegistryResult::Done ? result : RegistryResult::NotMade;
  }

  RegistryResult DeleteTree(Hive hive, std::string_view key) override {
    return Delete(hive, key, [](const fs::path&) { return true; });
  }

  RegistryResult DeleteEmpty(Hive hive, std::string_view key) override {
    return Delete(hive, key, [](const fs::path& folder) {
      std::error_code ignored;
      bool empty = !fs::exists(folder / kValueFile, ignored);
      VisitSubkeys(folder, [&empty](const fs::path&) { return empty = false; });
      return empty;
    });
  }

  std::vector<std::string> Subkeys(Hive hive, std::string_view key) override {
    const std::optional<KeyPath> path = SplitKey(key);
    const fs::path store = StoreFolder();
    std::vector<std::string> names;
    if (!path || store.empty()) return names;
    const StoreLock lock(store, StoreLock::Kind::Reading);
    VisitSubkeys(KeyFolder(store, hive, *path), [&names](const fs::path& folder) {
      names.push_back(KeyName(folder));
      return true;
    });
    std::sort(names.begin(), names.end(), NameLess());
    return names;
  }

  void* NewOpenDescriptor() override { return nullptr; }

 private:
  static RegistryResult Put(Hive hive, std::string_view key, std::string_view value,
                            bool keepExisting, bool& wasThere) {
    const std::optional<KeyPath> path = SplitKey(key);
    const fs::path store = StoreFolder();
    if (!path || store.empty()) return RegistryResult::Failed;
    std::error_code error;
    fs::create_directories(store, error);
    if (error) return ResultOfWriting(error);
    const StoreLock lock(store, StoreLock::Kind::Writing);
    if (lock.Error()) return ResultOfWriting(lock.Error());
    const fs::path folder = KeyFolder(store, hive, *path);
    wasThere = fs::is_directory(folder, error);
    if (wasThere && keepExisting) return RegistryResult::Exists;
    error =
        wasThere ? PutValue(folder, ValueText(value)) : MakeKey(store, folder, ValueText(value));
    return ResultOfWriting(error);
  }

  template <class Condition>
  static RegistryResult Delete(Hive hive, std::string_view key, Condition mayGo) {
    const std::optional<KeyPath> path = SplitKey(key);
    const fs::path store = StoreFolder();
    if (!path || store.empty()) return RegistryResult::NotFound;
    if (path->empty()) return RegistryResult::Denied;
    const StoreLock lock(store, StoreLock::Kind::Writing);
    if (lock.Error()) return ResultOf(lock.Error());
    const fs::path folder = KeyFolder(store, hive, *path);
    if (!mayGo(folder)) return RegistryResult::Exists;
    const fs::path leaving = store / kOldKeyFolder;
    std::error_code error;
    fs::remove_all(leaving, error);  // left by a process that was killed
    if (!error) fs::rename(folder, leaving, error);
    std::error_code ignored;
    if (!error) fs::remove_all(leaving, ignored);
    return ResultOf(error);
  }
};

}  // namespace

Registry& SystemRegistry() {
  static RegistryStore store;
  return store;
}

}  // namespace platform
