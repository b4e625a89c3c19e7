// Files of settings. Every change writes the file anew and puts it in place in one step; the lock
// of its folder keeps the changes of several processes apart.
#include <fcntl.h>
#include <sys/file.h>

#include <fstream>
#include <iterator>

#include "platform/SystemServices.h"
#include "platform/linux/Descriptor.h"
#include "platform/linux/ProfileText.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

// A file system that knows no such locks is used without.
class FolderLock {
 public:
  explicit FolderLock(const fs::path& file)
      : folder(open(FolderOf(file).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    while (folder && flock(folder.Get(), LOCK_EX) != 0 && errno == EINTR) {
    }
  }
  // Unlocked by hand: a child process that was forked meanwhile has the folder open as well.
  ~FolderLock() {
    if (folder) flock(folder.Get(), LOCK_UN);
  }
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

 private:
  static fs::path FolderOf(const fs::path& file) {
    return file.has_parent_path() ? file.parent_path() : fs::path(".");
  }

  Descriptor folder;
};

// Nothing when the file is there and cannot be read, so that it is not taken for an empty one.
std::optional<ProfileText> Load(const fs::path& file) {
  std::error_code error;
  const fs::file_status status = fs::status(file, error);
  if (status.type() == fs::file_type::not_found) return ProfileText("");
  if (status.type() != fs::file_type::regular) return std::nullopt;
  std::ifstream in(file, std::ios::binary);
  std::string bytes{std::istreambuf_iterator<char>(in), {}};
  if (!in.is_open() || in.bad()) return std::nullopt;
  return ProfileText(std::move(bytes));
}

class ProfileService final : public Profiles {
 public:
  std::string Read(const fs::path& file, std::string_view section, std::string_view key) override {
    const auto profile = Load(file);
    return profile ? profile->Read(section, key) : std::string();
  }

  bool Write(const fs::path& file, std::string_view section, std::string_view key,
             std::optional<std::string_view> value) override {
    const FolderLock lock(file);
    auto profile = Load(file);
    if (!profile || !profile->IsNarrow()) return false;
    const std::string before = profile->Bytes();
    profile->Write(section, key, value);
    if (profile->Bytes() == before) return SystemFiles().CanReadAndWrite(file);
    const auto failure = SystemFiles().Replace(file, [&](const fs::path& made) {
      std::ofstream out(made, std::ios::binary);
      out << profile->Bytes() << std::flush;
      return static_cast<bool>(out);
    });
    return !failure;
  }

  void Flush(const fs::path&) override {}  // every change is on the disk already

  std::vector<std::string> Sections(const fs::path& file) override {
    const auto profile = Load(file);
    return profile ? profile->Sections() : std::vector<std::string>();
  }

  std::vector<std::string> Keys(const fs::path& file, std::string_view section) override {
    const auto profile = Load(file);
    return profile ? profile->Keys(section) : std::vector<std::string>();
  }
};

}  // namespace

Profiles& SystemProfiles() {
  static ProfileService profiles;
  return profiles;
}

}  // namespace platform
