#include "platform/compound/FileStore.h"

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <string>

#include "platform/TemporaryFile.h"
#include "platform/compound/Format.h"
#include "platform/linux/Descriptor.h"

namespace platform::compound {
namespace {

namespace fs = std::filesystem;

HRESULT CodeOf(int error) {
  switch (error) {
    case ENOENT:
      return STG_E_FILENOTFOUND;
    case ENOTDIR:
    case ENAMETOOLONG:
    case ELOOP:
      return STG_E_PATHNOTFOUND;
    case EMFILE:
    case ENFILE:
      return STG_E_TOOMANYOPENFILES;
    case EACCES:
    case EPERM:
    case EROFS:
    case EISDIR:
      return STG_E_ACCESSDENIED;
    case EEXIST:
      return STG_E_FILEALREADYEXISTS;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return STG_E_MEDIUMFULL;
    case ENOMEM:
      return STG_E_INSUFFICIENTMEMORY;
    default:
      return STG_E_WRITEFAULT;
  }
}

class FileStore final : public ByteStore {
 public:
  explicit FileStore(Descriptor opened) : file(std::move(opened)) {}

  std::size_t Read(std::uint64_t offset, void* buffer, std::size_t count) override {
    const Moved read = ReadAllAt(file.Get(), offset, buffer, count);
    if (read.error) Fail(STG_E_READFAULT);
    return read.bytes;
  }

  void Write(std::uint64_t offset, const void* buffer, std::size_t count) override {
    const Moved written = WriteAllAt(file.Get(), offset, buffer, count);
    if (written.bytes < count) Fail(CodeOf(written.error));
  }

  std::uint64_t Size() override {
    struct stat status = {};
    if (fstat(file.Get(), &status) != 0) Fail(STG_E_READFAULT);
    return static_cast<std::uint64_t>(status.st_size);
  }

  void SetSize(std::uint64_t size) override {
    if (ftruncate(file.Get(), static_cast<off_t>(size)) != 0) Fail(CodeOf(errno));
  }

  void Sync() override {
    if (fdatasync(file.Get()) != 0 && errno != EINVAL) Fail(CodeOf(errno));
  }

 private:
  Descriptor file;
};

fs::path SystemPath(const OLECHAR* path) {
  std::u16string text(path);
  std::replace(text.begin(), text.end(), u'\\', u'/');
  return text;
}

bool Locks(const Descriptor& file, int kind) {
  while (flock(file.Get(), kind | LOCK_NB) != 0) {
    if (errno != EINTR) return false;
  }
  return true;
}

void Lock(const Descriptor& file, FileAccess access) {
  if (Locks(file, access.isExclusive ? LOCK_EX : LOCK_SH)) return;
  // Only readers are in the way of one who would read alone.
  const bool isReadElsewhere = access.isExclusive && !access.writes && Locks(file, LOCK_SH);
  Fail(isReadElsewhere ? STG_E_LOCKVIOLATION : STG_E_SHAREVIOLATION);
}

// The new file takes its name in a step that fails when there is one already.
void GiveNameTo(const fs::path& made, const fs::path& target) {
  if (renameat2(AT_FDCWD, made.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0) return;
  if (errno != EINVAL && errno != ENOSYS) Fail(CodeOf(errno));
  if (link(made.c_str(), target.c_str()) != 0) Fail(CodeOf(errno));
  unlink(made.c_str());
}

}  // namespace

std::unique_ptr<ByteStore> OpenFile(const OLECHAR* path, FileAccess access) {
  const fs::path target = SystemPath(path);
  const int flags = (access.writes ? O_RDWR : O_RDONLY) | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
  Descriptor file(open(target.c_str(), flags));
  if (!file) Fail(CodeOf(OpenErrorOf(target)));
  struct stat status = {};
  if (fstat(file.Get(), &status) != 0) Fail(STG_E_READFAULT);
  if (S_ISDIR(status.st_mode)) Fail(STG_E_ACCESSDENIED);
  if (!S_ISREG(status.st_mode)) Fail(STG_E_FILEALREADYEXISTS);
  Lock(file, access);
  return std::make_unique<FileStore>(std::move(file));
}

std::unique_ptr<ByteStore> CreateFile(const OLECHAR* path, FillStore fill) {
  const fs::path target = SystemPath(path);
  std::error_code error;
  if (target.empty()) Fail(STG_E_PATHNOTFOUND);
  if (fs::exists(fs::symlink_status(target, error))) Fail(STG_E_FILEALREADYEXISTS);
  const TemporaryFile made(TemporaryPathBeside(target));
  Descriptor file(open(made.Path().c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
  if (!file) Fail(CodeOf(OpenErrorOf(target)));
  Lock(file, {true, true});
  auto store = std::make_unique<FileStore>(std::move(file));
  fill(*store);
  GiveNameTo(made.Path(), target);
  return store;
}

std::unique_ptr<ByteStore> CreateUnnamedFile() {
  std::error_code error;
  const TemporaryFile made(TemporaryPathBeside(fs::temp_directory_path(error) / "storage"));
  Descriptor file(open(made.Path().c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (!file) Fail(CodeOf(OpenErrorOf(made.Path())));
  return std::make_unique<FileStore>(std::move(file));
}

}  // namespace platform::compound
