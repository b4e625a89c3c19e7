// Files that are read and written at any place.
#include "platform/RawFile.h"

#include <windows.h>

#include <algorithm>

#include "platform/windows/Handle.h"

namespace platform {
namespace {

static_assert(kFileNotFound == ERROR_FILE_NOT_FOUND && kPathNotFound == ERROR_PATH_NOT_FOUND &&
              kTooManyOpenFiles == ERROR_TOO_MANY_OPEN_FILES &&
              kAccessDenied == ERROR_ACCESS_DENIED && kDiskFull == ERROR_DISK_FULL &&
              kSharingViolation == ERROR_SHARING_VIOLATION &&
              kLockViolation == ERROR_LOCK_VIOLATION);

int NumberOf(DWORD error) {
  switch (error) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_TOO_MANY_OPEN_FILES:
    case ERROR_ACCESS_DENIED:
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
    case ERROR_DISK_FULL:
      return static_cast<int>(error);
    case ERROR_HANDLE_DISK_FULL:
      return kDiskFull;
    case ERROR_INVALID_NAME:
    case ERROR_BAD_PATHNAME:
    case ERROR_FILENAME_EXCED_RANGE:
      return kPathNotFound;
    default:
      return kNotAFile;
  }
}

OVERLAPPED At(std::uint64_t position) {
  OVERLAPPED place = {};
  place.Offset = static_cast<DWORD>(position);
  place.OffsetHigh = static_cast<DWORD>(position >> 32);
  return place;
}

constexpr std::size_t kMostAtOnce = std::size_t{1} << 30;

class SystemFile final : public RawFile {
 public:
  explicit SystemFile(Handle opened) : file(std::move(opened)) {}

  std::size_t ReadAt(std::uint64_t position, void* to, std::size_t count) override {
    std::size_t done = 0;
    while (done < count) {
      OVERLAPPED place = At(position + done);
      DWORD got = 0;
      const auto piece = static_cast<DWORD>(std::min(count - done, kMostAtOnce));
      if (!ReadFile(file.Get(), static_cast<char*>(to) + done, piece, &got, &place) || !got) break;
      done += got;
    }
    return done;
  }

  std::size_t WriteAt(std::uint64_t position, const void* from, std::size_t count) override {
    std::size_t done = 0;
    while (done < count) {
      OVERLAPPED place = At(position + done);
      DWORD put = 0;
      const auto piece = static_cast<DWORD>(std::min(count - done, kMostAtOnce));
      const auto* next = static_cast<const char*>(from) + done;
      if (!WriteFile(file.Get(), next, piece, &put, &place) || !put) break;
      done += put;
    }
    return done;
  }

  std::uint64_t Length() override {
    LARGE_INTEGER length = {};
    return GetFileSizeEx(file.Get(), &length) ? static_cast<std::uint64_t>(length.QuadPart) : 0;
  }

  bool SetLength(std::uint64_t length) override {
    LARGE_INTEGER end = {};
    end.QuadPart = static_cast<LONGLONG>(length);
    return SetFilePointerEx(file.Get(), end, nullptr, FILE_BEGIN) && SetEndOfFile(file.Get());
  }

  bool Lock(std::uint64_t position, std::uint64_t count) override {
    OVERLAPPED place = At(position);
    return LockFileEx(file.Get(), LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0,
                      static_cast<DWORD>(count), static_cast<DWORD>(count >> 32), &place);
  }
  bool Unlock(std::uint64_t position, std::uint64_t count) override {
    OVERLAPPED place = At(position);
    return UnlockFileEx(file.Get(), 0, static_cast<DWORD>(count), static_cast<DWORD>(count >> 32),
                        &place);
  }

 private:
  Handle file;
};

}  // namespace

std::unique_ptr<RawFile> RawFile::Open(const std::filesystem::path& path, FileUse use, int& error) {
  const bool writes = use != FileUse::Read;
  const DWORD access = writes ? GENERIC_READ | GENERIC_WRITE : GENERIC_READ;
  // Nobody knows the name of a new file but who makes it.
  const bool isAlone = use == FileUse::Change;
  const DWORD share = FILE_SHARE_READ | FILE_SHARE_DELETE | (isAlone ? 0 : FILE_SHARE_WRITE);
  const DWORD how = use == FileUse::MakeNew ? CREATE_NEW : OPEN_EXISTING;
  const DWORD attributes = GetFileAttributesW(path.c_str());
  if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY)) {
    error = kNotAFile;
    return nullptr;
  }
  Handle file(
      CreateFileW(path.c_str(), access, share, nullptr, how, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file) {
    error = NumberOf(GetLastError());
    return nullptr;
  }
  if (GetFileType(file.Get()) != FILE_TYPE_DISK) {
    error = kNotAFile;
    return nullptr;
  }
  error = kNoError;
  return std::make_unique<SystemFile>(std::move(file));
}

}  // namespace platform
