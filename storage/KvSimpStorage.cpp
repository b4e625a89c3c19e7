#include "storage/KvSimpStorage.h"

#include <algorithm>
#include <cstring>
#include <filesystem>

#include "base/CodePage.h"
#include "platform/StoragePath.h"
#include "settings/ZNDebugMonitor.h"
#include "storage/CheckedStream.h"
#include "storage/KvErrors.h"
#include "storage/KvFile.h"

namespace {

namespace fs = std::filesystem;

constexpr char kTopic[] = "KvStorage";

void TellFailure(const char* operation, const KvString& object, const std::error_code& error) {
  if (!error) return;
  ZNDebugMonitor(kTopic, "Operation %s schlug fehl f\xFCr %s (%s)", operation,
                 static_cast<const char*>(object), error.message().c_str());
}

char Lower(char c) {
  return base::ToLower(c);
}

// "*" stands for any letters, "?" for one; case does not count.
bool Matches(std::string_view name, std::string_view pattern) {
  std::size_t at = 0, p = 0, afterStar = std::string_view::npos, retry = 0;
  while (at < name.size()) {
    if (p < pattern.size() && pattern[p] == '*') {
      afterStar = ++p;
      retry = at;
    } else if (p < pattern.size() && (pattern[p] == '?' || Lower(pattern[p]) == Lower(name[at]))) {
      ++p;
      ++at;
    } else if (afterStar != std::string_view::npos) {
      p = afterStar;
      at = ++retry;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of('*', p) == std::string_view::npos;
}

unsigned AttributesOf(const fs::directory_entry& entry) {
  std::error_code error;
  if (entry.is_directory(error)) return kStorageElement;
  return entry.is_regular_file(error) ? kStreamElement : 0;
}

// A file of the folder.
class FileStream final : public CheckedStream {
 public:
  FileStream(const char* path, unsigned mode) : file(path, mode) {}
  bool IsOpen() const { return file.IsOpen(); }

  unsigned Read(void* buffer, unsigned count) override { return file.Read(buffer, count); }
  unsigned Write(const void* buffer, unsigned count) override { return file.Write(buffer, count); }
  unsigned GetLength() override { return static_cast<unsigned>(file.GetLength()); }
  unsigned GetPosition() override { return static_cast<unsigned>(file.GetPosition()); }
  long Seek(long offset, int origin) override {
    return static_cast<long>(file.Seek(offset, origin));
  }
  int LockRange(unsigned position, unsigned count) override {
    file.LockRange(position, count);
    return 1;
  }
  int UnlockRange(unsigned position, unsigned count) override {
    file.UnlockRange(position, count);
    return 1;
  }
  void Close() override {
    Finish();
    delete this;
  }
  void SetLength(unsigned length) override { file.SetLength(length); }
  KvFile* GetFile() override { return &file; }
  void GetStat(STATSTG*) override {}
  void Abandon() override { delete this; }
  bool Finish() override {
    if (!isFinished) isKept = file.Close();
    isFinished = true;
    return isKept;
  }

 private:
  KvFile file;
  bool isFinished = false;
  bool isKept = false;
};

// A name may lead into folders below, which are made with the file.
IKvStream* OpenFileStream(const KvString& path, unsigned mode) {
  if (mode & OpenModeCreate) {
    std::error_code error;
    fs::create_directories(platform::PathOfStorage(path.View()).parent_path(), error);
    TellFailure("CreateDirectory", path, error);
  }
  auto stream = std::make_unique<FileStream>(path, mode);
  return stream->IsOpen() ? stream.release() : nullptr;
}

// Removes a file, or a folder that holds nothing; the other one of the two stays.
bool RemoveFrom(const KvString& object, const char* operation, bool isFolder) {
  const fs::path place = FindOnDisk(platform::PathOfStorage(object.View()));
  std::error_code error;
  const fs::file_type type = fs::symlink_status(place, error).type();
  if (type == fs::file_type::not_found) {
    error = std::make_error_code(std::errc::no_such_file_or_directory);
  } else if ((type == fs::file_type::directory) != isFolder) {
    error = std::make_error_code(isFolder ? std::errc::not_a_directory : std::errc::is_a_directory);
  } else if (fs::remove(place, error)) {
    return true;
  }
  TellFailure(operation, object, error);
  return false;
}

// What creates also writes.
unsigned ModeOf(unsigned mode) {
  return (mode & OpenModeCreate) ? mode | OpenModeWrite : mode;
}

}  // namespace

// --- the folder

KvSimpStorage::KvSimpStorage(const char* folder, unsigned mode, bool isNative, bool isExternal)
    : native(isNative), external(isExternal) {
  SetPath(folder, mode);
}

KvSimpStorage::~KvSimpStorage() = default;

KvSimpStorage* KvSimpStorage::CreateNewKvStorage(const char* folder, unsigned mode, bool native,
                                                 bool external) {
  KvString path(folder);
  if (external) return new KvSimpStorage(path, mode, native, true);
  const int mark = path.Find('/');
  if (mark < 0) {
    path += "_kv";
  } else {
    path = path.Left(mark) + "_kv\\" + path.Mid(mark + 1);
  }
  return new KvSimpStorage(path, mode, native, false);
}

void KvSimpStorage::SetPath(const char* newPath, unsigned mode) {
  path = newPath;
  path.Replace('/', '\\');
  if (path.IsEmpty()) path = ".";  // never the root of the disk
  if (path.GetAt(path.GetLength() - 1) != '\\') path += '\\';
  bad = false;
  found.clear();
  next = 0;
  if (external && (mode & OpenModeCreate)) MakeFolder();
}

void KvSimpStorage::MakeFolder() const {
  std::error_code error;
  fs::create_directories(platform::PathOfStorage(path.View()), error);
  TellFailure("CreateDirectory", path, error);
}

KvString KvSimpStorage::PathOf(const char* name) const {
  return path + (name ? name : "");
}

void KvSimpStorage::Close() {
  delete this;
}

// --- streams

IKvStream* KvSimpStorage::CreateStream(const char* name, unsigned mode) {
  return OpenFileStream(PathOf(name), ModeOf(mode));
}

IKvStream* KvSimpStorage::OpenStream(const char* name, unsigned mode) {
  return OpenFileStream(PathOf(name), ModeOf(mode));
}

bool KvSimpStorage::DeleteStream(const char* name) {
  return RemoveFrom(PathOf(name), "DeleteStream", false);
}

// --- storages

IKvStorage* KvSimpStorage::CreateStorage(const char* name, unsigned mode, bool isNative,
                                         bool isExternal) {
  return new KvSimpStorage(PathOf(name), mode, isNative, isExternal);
}

IKvStorage* KvSimpStorage::OpenStorage(const char* name, unsigned mode, bool isNative,
                                       bool isExternal) {
  return CreateStorage(name, mode, isNative, isExternal);
}

bool KvSimpStorage::RemoveStorage(const char* name) {
  return RemoveFrom(name ? PathOf(name) : path.Left(path.GetLength() - 1), "RemoveStorage", true);
}

// --- elements

bool KvSimpStorage::FindFirst(KvString& name, unsigned& attributes) {
  const KvString pattern = name.IsEmpty() || name == "*.*" ? KvString("*") : name;
  std::error_code error;
  found.clear();
  next = 0;
  attributes = 0;
  for (fs::directory_iterator it(platform::PathOfStorage(path.View()), error), end;
       !error && it != end; it.increment(error)) {
    const std::string element = platform::StoragePathOf(it->path().filename());
    const bool isHidden = element.empty() || element[0] == '.';
    if (isHidden || !Matches(element, pattern.View())) continue;
    found.push_back({element, AttributesOf(*it)});
  }
  std::sort(found.begin(), found.end(),
            [](const Element& a, const Element& b) { return a.name < b.name; });
  return FindNext(name, attributes);
}

bool KvSimpStorage::FindNext(KvString& name, unsigned& attributes) {
  if (next >= found.size()) return false;
  name = found[next].name;
  attributes = found[next].attributes;
  ++next;
  return true;
}

bool KvSimpStorage::Exists(const char* name) {
  std::error_code error;
  return fs::exists(FindOnDisk(platform::PathOfStorage(PathOf(name).View())), error);
}
