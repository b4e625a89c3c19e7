// A file that is read and written at any place, for the storages that keep streams in files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>

namespace platform {

// What goes wrong with files, in one numbering on all systems.
inline constexpr int kNoError = 0;
inline constexpr int kNotAFile = 1;  // a folder or a device; anything that has no number here
inline constexpr int kFileNotFound = 2;
inline constexpr int kPathNotFound = 3;
inline constexpr int kTooManyOpenFiles = 4;
inline constexpr int kAccessDenied = 5;
inline constexpr int kSharingViolation = 32;
inline constexpr int kLockViolation = 33;
inline constexpr int kDiskFull = 112;

enum class FileUse {
  Read,
  Change,   // read and write; other writers are kept out while it is open
  MakeNew,  // the same, of a file that must not be there yet
};

// One thread at a time. The file is closed with the object.
class RawFile {
 public:
  // Null when the file cannot be opened, and `error` says why. A folder or a device is no file.
  static std::unique_ptr<RawFile> Open(const std::filesystem::path& path, FileUse use, int& error);
  virtual ~RawFile() = default;

  // Both give the number of bytes moved: fewer than asked at the end of the file, on a full disk or
  // where the disk fails.
  virtual std::size_t ReadAt(std::uint64_t position, void* to, std::size_t count) = 0;
  virtual std::size_t WriteAt(std::uint64_t position, const void* from, std::size_t count) = 0;
  virtual std::uint64_t Length() = 0;
  virtual bool SetLength(std::uint64_t length) = 0;
  // Keeps other processes that lock out of a range. False when one of them has it.
  virtual bool Lock(std::uint64_t position, std::uint64_t count) = 0;
  virtual bool Unlock(std::uint64_t position, std::uint64_t count) = 0;
};

}  // namespace platform
