// Files that are read and written at any place.
#include "platform/RawFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include "platform/linux/Descriptor.h"

namespace platform {
namespace {

int NumberOf(int error) {
  switch (error) {
    case ENOENT:
      return kFileNotFound;
    case ENOTDIR:
    case ENAMETOOLONG:
    case ELOOP:
      return kPathNotFound;
    case EMFILE:
    case ENFILE:
      return kTooManyOpenFiles;
    case EACCES:
    case EPERM:
    case EROFS:
      return kAccessDenied;
    case EBUSY:
    case ETXTBSY:
      return kSharingViolation;
    case EAGAIN:
      return kLockViolation;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return kDiskFull;
    default:
      return kNotAFile;
  }
}

int FlagsOf(FileUse use) {
  // Without waiting: a pipe would keep us until somebody opens its other end.
  constexpr int kAlways = O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
  if (use == FileUse::Read) return kAlways | O_RDONLY;
  return kAlways | O_RDWR | (use == FileUse::MakeNew ? O_CREAT | O_EXCL : 0);
}

class SystemFile final : public RawFile {
 public:
  explicit SystemFile(Descriptor opened) : file(std::move(opened)) {}

  std::size_t ReadAt(std::uint64_t position, void* to, std::size_t count) override {
    return ReadAllAt(file.Get(), position, to, count).bytes;
  }

  std::size_t WriteAt(std::uint64_t position, const void* from, std::size_t count) override {
    return WriteAllAt(file.Get(), position, from, count).bytes;
  }

  std::uint64_t Length() override {
    struct stat status = {};
    return fstat(file.Get(), &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
  }

  bool SetLength(std::uint64_t length) override {
    return ftruncate(file.Get(), static_cast<off_t>(length)) == 0;
  }

  bool Lock(std::uint64_t position, std::uint64_t count) override {
    return SetLock(F_WRLCK, position, count);
  }
  bool Unlock(std::uint64_t position, std::uint64_t count) override {
    return SetLock(F_UNLCK, position, count);
  }

 private:
  bool SetLock(short type, std::uint64_t position, std::uint64_t count) {
    struct flock range = {};
    range.l_type = type;
    range.l_whence = SEEK_SET;
    range.l_start = static_cast<off_t>(position);
    range.l_len = static_cast<off_t>(count);
    return fcntl(file.Get(), F_SETLK, &range) == 0;
  }

  Descriptor file;
};

}  // namespace

std::unique_ptr<RawFile> RawFile::Open(const std::filesystem::path& path, FileUse use, int& error) {
  Descriptor file(open(path.c_str(), FlagsOf(use), 0666));
  if (!file) {
    error = NumberOf(OpenErrorOf(path));
    return nullptr;
  }
  struct stat status = {};
  if (fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode)) {
    error = kNotAFile;
    return nullptr;
  }
  // A file system without locks does not keep anybody from writing.
  if (use != FileUse::Read && flock(file.Get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
    error = kLockViolation;
    return nullptr;
  }
  error = kNoError;
  return std::make_unique<SystemFile>(std::move(file));
}

}  // namespace platform
