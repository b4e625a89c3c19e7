// Files that appear whole or not at all, by renaming.
#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <vector>

#include "platform/SystemServices.h"
#include "platform/TemporaryFile.h"
#include "platform/linux/Descriptor.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

std::string ReasonOf(int error) {
  return std::generic_category().message(error);
}

// Where the bytes for a path go in the end.
struct Destination {
  fs::path file;
  bool replaceable = false;  // else it is written in place: a device, a pipe, an open descriptor
  bool exists = false;
  struct stat status = {};  // when it exists
  int error = 0;
};

// Links below /proc lead to what a process has open and cannot be followed by name.
bool IsDescriptorLink(const fs::path& link) {
  std::error_code error;
  const fs::path folder = fs::canonical(link.parent_path(), error);
  return !error && folder.native().rfind("/proc/", 0) == 0;
}

Destination Resolve(const fs::path& target) {
  constexpr int kMostLinks = 40;
  Destination to;
  std::error_code error;
  to.file = fs::absolute(target, error);
  if (error) {
    to.error = error.value();
    return to;
  }
  to.exists = stat(to.file.c_str(), &to.status) == 0;
  if (!to.exists && errno != ENOENT) to.error = errno;
  if (to.exists && S_ISDIR(to.status.st_mode)) to.error = EISDIR;
  if (to.error || (to.exists && !S_ISREG(to.status.st_mode))) return to;
  for (int links = 0; fs::is_symlink(fs::symlink_status(to.file, error)); ++links) {
    if (IsDescriptorLink(to.file)) return to;
    const fs::path next = fs::read_symlink(to.file, error);
    if (error || links == kMostLinks) {
      to.error = error ? error.value() : ELOOP;
      return to;
    }
    to.file = to.file.parent_path() / next;
  }
  to.replaceable = true;
  return to;
}

// Whether the path still leads to the open file.
bool Names(const fs::path& path, const Descriptor& file) {
  struct stat named = {}, open = {};
  return lstat(path.c_str(), &named) == 0 && fstat(file.Get(), &open) == 0 &&
         named.st_dev == open.st_dev && named.st_ino == open.st_ino;
}

// A new file that is being written has a lock on it, which ends with the program. File systems
// without locks keep what is left over.
bool IsLeftOver(const Descriptor& file) {
  return file && flock(file.Get(), LOCK_EX | LOCK_NB) == 0;
}

void RemoveLeftOvers(const fs::path& folder) {
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    const fs::path& path = entry->path();
    if (!IsTemporaryName(path.filename())) continue;
    const int flags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    const Descriptor file(open(path.c_str(), flags));
    if (IsLeftOver(file) && Names(path, file)) unlink(path.c_str());
  }
}

// A new file with its lock, open for writing; the descriptor is none when there was an error.
struct NewFile {
  Descriptor file;
  fs::path path;
  int error = 0;
};

// For an existing target the new file has no rights for others until it has that file's own,
// otherwise those that the process gives to new files.
NewFile CreateBeside(const fs::path& target, bool exists) {
  constexpr int kMostTries = 100;
  for (int i = 0; i < kMostTries; ++i) {
    const fs::path path = TemporaryPathBeside(target);
    Descriptor made(
        open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, exists ? 0600 : 0666));
    if (!made && errno != EEXIST) return {Descriptor(-1), {}, errno};
    if (!made) continue;
    // Another program may take it for a left-over before it is locked.
    const bool isLocked = flock(made.Get(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
    if (isLocked && Names(path, made)) return {std::move(made), path, 0};
  }
  return {Descriptor(-1), {}, EEXIST};
}

// Gives the written file the rights of the one that it replaces and brings it to the disk.
int Finish(const Destination& to, const Descriptor& file) {
  if (to.exists) {
    // Only the superuser can keep another's file his; for others it stays the writer's own.
    [[maybe_unused]] const int kept = fchown(file.Get(), to.status.st_uid, to.status.st_gid);
    if (fchmod(file.Get(), to.status.st_mode & 07777) != 0) return errno;
  }
  return fsync(file.Get()) == 0 ? 0 : errno;
}

// Gives the bytes of a file to a device, a pipe or an open descriptor; 0 or the error.
int CopyInto(const fs::path& target, const Descriptor& file) {
  const Descriptor to(open(target.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC | O_NOCTTY));
  if (!to) return errno;
  std::vector<char> block(std::size_t{1} << 16);
  for (off_t at = 0;;) {
    const ssize_t got = pread(file.Get(), block.data(), block.size(), at);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return got < 0 ? errno : 0;
    std::string_view part(block.data(), static_cast<std::size_t>(got));
    if (const int error = WriteAll(to.Get(), part)) return error;
    at += got;
  }
}

// After a loss of power the name leads to the new file as well. Some file systems cannot do this.
void SyncFolder(const fs::path& folder) {
  const Descriptor descriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (descriptor) fsync(descriptor.Get());
}

class SharedFile final : public GrowingFile {
 public:
  SharedFile(Descriptor opened, bool synchronous)
      : file(std::move(opened)), writesThrough(synchronous) {}

  bool Append(std::string_view bytes) override {
    struct stat before = {};
    const bool known = fstat(file.Get(), &before) == 0;
    std::string_view rest = bytes;
    if (WriteAll(file.Get(), rest) == 0) return true;
    if (known && rest.size() < bytes.size()) {
      [[maybe_unused]] const int cut = ftruncate(file.Get(), before.st_size);
    }
    return false;
  }

  // What was written through needs no second wait for the disk.
  bool Flush() override { return writesThrough || fdatasync(file.Get()) == 0; }

  bool EndsInLineFeed() override {
    struct stat status = {};
    if (fstat(file.Get(), &status) != 0 || status.st_size == 0) return true;
    char byte = '\n';
    return pread(file.Get(), &byte, 1, status.st_size - 1) != 1 || byte == '\n';
  }

 private:
  Descriptor file;
  const bool writesThrough;
};

// A reader at the other end sees a finished file or nothing of it.
std::optional<std::string> Pipe(const fs::path& target, const Files::WriteFile& write) {
  std::error_code error;
  const fs::path folder = fs::temp_directory_path(error);
  if (error) return ReasonOf(error.value());
  const NewFile made = CreateBeside(folder / target.filename(), true);
  if (made.error) return ReasonOf(made.error);
  const TemporaryFile temporary(made.path);
  if (!write(made.path)) return "";
  const int failure = CopyInto(target, made.file);
  return failure ? std::optional(ReasonOf(failure)) : std::nullopt;
}

std::optional<std::string> PutInPlace(const fs::path& finished, const Descriptor& file,
                                      const Destination& to) {
  if (const int error = Finish(to, file)) return ReasonOf(error);
  if (rename(finished.c_str(), to.file.c_str()) != 0) return ReasonOf(errno);
  SyncFolder(to.file.parent_path());
  return std::nullopt;
}

class FileService final : public Files {
 public:
  std::optional<std::string> Replace(const fs::path& target, const WriteFile& write) override {
    if (target.empty()) return ReasonOf(ENOENT);
    const Destination to = Resolve(target);
    if (to.error) return ReasonOf(to.error);
    if (!to.replaceable) return Pipe(target, write);
    // Renaming would not ask the file that goes, but who protects a file means to keep it.
    if (to.exists && access(to.file.c_str(), W_OK) != 0) return ReasonOf(errno);
    RemoveLeftOvers(to.file.parent_path());
    const NewFile made = CreateBeside(to.file, to.exists);
    if (made.error) return ReasonOf(made.error);
    const TemporaryFile temporary(made.path);
    return write(made.path) ? PutInPlace(made.path, made.file, to) : "";
  }

  std::optional<std::string> Move(const fs::path& finished, const fs::path& target) override {
    const Destination to = Resolve(target);
    if (to.error) return ReasonOf(to.error);
    if (!to.replaceable) return ReasonOf(EINVAL);
    if (to.exists && access(to.file.c_str(), W_OK) != 0) return ReasonOf(errno);
    const Descriptor file(open(finished.c_str(), O_RDWR | O_CLOEXEC));
    return file ? PutInPlace(finished, file, to) : ReasonOf(errno);
  }

  std::unique_ptr<GrowingFile> OpenGrowing(const fs::path& path, bool writeThrough) override {
    const int flags = O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    Descriptor file(open(path.c_str(), flags | (writeThrough ? O_DSYNC : 0), 0666));
    return file ? std::make_unique<SharedFile>(std::move(file), writeThrough) : nullptr;
  }

  bool CanReadAndWrite(const fs::path& path) override {
    return access(path.c_str(), R_OK | W_OK) == 0;
  }

  fs::path ModuleOf(const void* address) override {
    Dl_info info;
    void* extra = nullptr;
    if (!address || !dladdr1(address, &info, &extra, RTLD_DL_LINKMAP) || !extra) return {};
    // The program itself has no name here, only the one that it was called by, which may be no
    // path.
    const std::string name = static_cast<const link_map*>(extra)->l_name;
    std::error_code error;
    const fs::path path = fs::canonical(name.empty() ? "/proc/self/exe" : name, error);
    return error ? fs::path() : path;
  }
};

}  // namespace

Files& SystemFiles() {
  static FileService files;
  return files;
}

}  // namespace platform
