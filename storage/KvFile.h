// A file of a folder storage.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>

#include "base/KvInterfaces.h"
#include "base/KvString.h"
#include "platform/RawFile.h"

// The path of a file or folder as it stands on the disk: exactly as given, else without regard to
// case (the first in sorted order), else as given.
std::filesystem::path FindOnDisk(const std::filesystem::path& path);

// Copies a file; the target appears whole or not at all, and may be written to. False on failure.
bool CopyFileWhole(const std::filesystem::path& from, const std::filesystem::path& to);

// A file that is opened with OpenModeCreate is written beside its place, under a name that begins
// with a point, and takes its place at Close: until then, and after a failed write, the file from
// before is there. Its length is then what was written. One that is opened for writing alone is
// changed in place. Who opens for writing keeps out other writers, not readers. One thread at a
// time.
class FXBOX_API KvFile {
 public:
  // `path` in the system's code page, with "\" between its parts. A file that is locked or denied
  // is tried five times in 400 ms, then KvFileException is thrown, as it is at once for a path that
  // does not lead to a folder where OpenModeCreate is set. After any other failure IsOpen is false.
  KvFile(const char* path, unsigned mode);
  // Without Close, what was written beside the place is gone.
  ~KvFile();
  KvFile(const KvFile&) = delete;
  KvFile& operator=(const KvFile&) = delete;

  bool IsOpen() const { return existing || fresh; }
  const KvString& GetFilePath() const { return path; }
  // The file's place on the disk.
  const std::filesystem::path& Place() const { return place; }

  unsigned Read(void* buffer, unsigned count);
  // Fewer than `count` when the disk is full.
  unsigned Write(const void* buffer, unsigned count);
  std::uint64_t GetLength();
  std::uint64_t GetPosition() const { return position; }
  // As IKvSeek::Seek; -1 leaves the position where it is.
  std::int64_t Seek(std::int64_t offset, int origin);
  bool SetLength(std::uint64_t length);
  bool LockRange(std::uint64_t at, std::uint64_t count);
  bool UnlockRange(std::uint64_t at, std::uint64_t count);
  // Puts what was written in its place; false when that fails or a write has failed.
  bool Close();

 private:
  platform::RawFile* Current() const { return fresh ? fresh.get() : existing.get(); }
  bool Writes() const { return (mode & OpenModeWrite) != 0; }
  bool Creates() const { return Writes() && (mode & OpenModeCreate) != 0; }
  int TryOpen();
  void OpenWithRetry();
  void TellOpenFailure(int error) const;
  int MakeFresh();
  bool BeginWriting();
  bool MoveInPlace();

  KvString path;
  unsigned mode;
  std::filesystem::path place;
  std::filesystem::path freshPlace;
  std::unique_ptr<platform::RawFile> existing;
  std::unique_ptr<platform::RawFile> fresh;  // what will take the place
  std::uint64_t position = 0;
  std::uint64_t writtenEnd = 0;
  bool hasFailed = false;
};
