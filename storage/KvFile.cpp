#include "storage/KvFile.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <thread>
#include <vector>

#include "base/CodePage.h"
#include "platform/Services.h"
#include "platform/StoragePath.h"
#include "platform/TemporaryFile.h"
#include "settings/TraceLogStd.h"
#include "storage/KvErrors.h"

namespace {

namespace fs = std::filesystem;

constexpr int kTries = 5;
constexpr std::chrono::milliseconds kPause(100);

std::string LowerName(const fs::path& path) {
  std::string name = platform::StoragePathOf(path.filename());
  std::transform(name.begin(), name.end(), name.begin(), base::ToLower);
  return name;
}

bool CopyBytes(platform::RawFile& from, platform::RawFile& to) {
  std::vector<char> block(1 << 16);
  std::uint64_t at = 0;
  while (const std::size_t got = from.ReadAt(at, block.data(), block.size())) {
    if (to.WriteAt(at, block.data(), got) != got) return false;
    at += got;
  }
  return true;
}

}  // namespace

fs::path FindOnDisk(const fs::path& path) {
  std::error_code error;
  if (!path.has_filename() || fs::exists(path, error)) return path;
  const std::string wanted = LowerName(path);
  fs::path found;
  for (fs::directory_iterator
           it(path.parent_path().empty() ? fs::path(".") : path.parent_path(), error),
       end;
       !error && it != end; it.increment(error)) {
    if (LowerName(it->path()) != wanted) continue;
    if (found.empty() || it->path().filename() < found.filename()) found = it->path();
  }
  return found.empty() ? path : path.parent_path() / found.filename();
}

bool CopyFileWhole(const fs::path& from, const fs::path& to) {
  const auto copy = [&](const fs::path& temporary) {
    std::ifstream in(from, std::ios::binary);
    std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
    std::vector<char> block(std::size_t{1} << 20);
    while (in && out) {
      in.read(block.data(), static_cast<std::streamsize>(block.size()));
      out.write(block.data(), in.gcount());
    }
    return in.eof() && out.flush();
  };
  return !platform::CurrentServices().files->Replace(to, copy);
}

// --- opening

KvFile::KvFile(const char* filePath, unsigned openMode)
    : path(filePath), mode(openMode), place(FindOnDisk(platform::PathOfStorage(path.View()))) {
  OpenWithRetry();
}

KvFile::~KvFile() {
  if (!fresh) return;
  fresh.reset();
  std::error_code ignored;
  fs::remove(freshPlace, ignored);
}

// Gives the error, or 0.
int KvFile::TryOpen() {
  int error = platform::kNoError;
  existing = platform::RawFile::Open(
      place, Writes() ? platform::FileUse::Change : platform::FileUse::Read, error);
  const bool isNew = error == platform::kFileNotFound;
  if (!Creates() || (error && !isNew)) return error;
  return isNew || (mode & OpenModeTruncate) ? MakeFresh() : platform::kNoError;
}

void KvFile::OpenWithRetry() {
  for (int tries = 1;; ++tries) {
    const int error = TryOpen();
    if (!error) return;
    const bool mayPass = error == platform::kAccessDenied || error == platform::kSharingViolation ||
                         error == platform::kLockViolation;
    const bool isMissing = error == platform::kFileNotFound || error == platform::kPathNotFound;
    if (!mayPass || tries == kTries) {
      TellOpenFailure(error);
      if (mayPass || (isMissing && Creates())) throw KvFileException(error, path);
      return;
    }
    std::this_thread::sleep_for(kPause);
  }
}

void KvFile::TellOpenFailure(int error) const {
  const bool isMissing = error == platform::kFileNotFound || error == platform::kPathNotFound;
  if (isMissing && !Creates()) return;
  TraceLog log(1);
  if (isMissing) {
    log.Format(1, "Could not create or open File %s in Mode %x (#%d)",
               static_cast<const char*>(path), mode, error);
    log.Format(1, "Openmode for File %s was Create(%x), Write(%x) ", static_cast<const char*>(path),
               mode & OpenModeCreate, mode & OpenModeWrite);
  }
  log.Format(1, "%s", static_cast<const char*>(KvFileException(error, path).Message()));
}

int KvFile::MakeFresh() {
  freshPlace = platform::TemporaryPathBeside(place);
  int error = platform::kNoError;
  fresh = platform::RawFile::Open(freshPlace, platform::FileUse::MakeNew, error);
  return error;
}

// --- moving bytes

unsigned KvFile::Read(void* buffer, unsigned count) {
  if (!IsOpen() || !buffer) return 0;
  const auto got = static_cast<unsigned>(Current()->ReadAt(position, buffer, count));
  position += got;
  return got;
}

// The first write brings along what the file held so far.
bool KvFile::BeginWriting() {
  if (!IsOpen() || !Writes() || hasFailed) return false;
  if (fresh || !Creates()) return true;
  if (MakeFresh() != platform::kNoError || !CopyBytes(*existing, *fresh)) hasFailed = true;
  return !hasFailed;
}

unsigned KvFile::Write(const void* buffer, unsigned count) {
  if (!buffer || count == 0 || !BeginWriting()) return 0;
  const auto put = static_cast<unsigned>(Current()->WriteAt(position, buffer, count));
  if (put < count) hasFailed = true;
  position += put;
  writtenEnd = std::max(writtenEnd, position);
  return put;
}

std::uint64_t KvFile::GetLength() {
  return IsOpen() ? Current()->Length() : 0;
}

std::int64_t KvFile::Seek(std::int64_t offset, int origin) {
  if (!IsOpen() || origin < 0 || origin > 2) return -1;
  const std::uint64_t from = origin == 0 ? 0 : origin == 1 ? position : GetLength();
  const std::int64_t target = static_cast<std::int64_t>(from) + offset;
  if (target < 0) return -1;
  position = static_cast<std::uint64_t>(target);
  return target;
}

bool KvFile::SetLength(std::uint64_t length) {
  if (!BeginWriting()) return false;
  if (!Current()->SetLength(length)) hasFailed = true;
  writtenEnd = length;
  return !hasFailed;
}

bool KvFile::LockRange(std::uint64_t at, std::uint64_t count) {
  return IsOpen() && Current()->Lock(at, count);
}

bool KvFile::UnlockRange(std::uint64_t at, std::uint64_t count) {
  return IsOpen() && Current()->Unlock(at, count);
}

// --- the end

bool KvFile::Close() {
  if (fresh && !hasFailed && !fresh->SetLength(writtenEnd)) hasFailed = true;
  const bool moves = fresh != nullptr;
  existing.reset();
  if (!moves) return !hasFailed;
  const bool isKept = !hasFailed && MoveInPlace();
  fresh.reset();
  std::error_code ignored;
  if (!isKept) fs::remove(freshPlace, ignored);
  return isKept;
}

bool KvFile::MoveInPlace() {
  // Open, and so locked, up to here: what nobody has open is taken for a leftover of the dead.
  const auto failure = platform::CurrentServices().files->Move(freshPlace, place);
  fresh.reset();
  if (failure) {
    TraceLog(1).Format(1, "%s: %s", static_cast<const char*>(path), failure->c_str());
    return false;
  }
  // The name is written as it was given now.
  std::error_code ignored;
  const fs::path given = platform::PathOfStorage(path.View());
  if (given != place) fs::rename(place, given, ignored);
  return true;
}
