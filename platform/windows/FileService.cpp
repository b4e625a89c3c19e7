// Files that appear whole or not at all, by renaming.
#include <windows.h>

#include <vector>

#include "platform/SystemServices.h"
#include "platform/TemporaryFile.h"
#include "platform/windows/Handle.h"
#include "platform/windows/ModulePath.h"
#include "platform/windows/Text.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// Where the bytes for a path go in the end.
struct Destination {
  fs::path file;
  bool replaceable = true;  // else it is written in place: a device such as NUL, a pipe
  DWORD error = ERROR_SUCCESS;
};

// A link stays; what it leads to is replaced.
fs::path FinalPath(HANDLE file, const fs::path& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  const bool isLink =
      attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT);
  if (!isLink) return path;
  std::wstring final(32768, L'\0');
  const DWORD length =
      GetFinalPathNameByHandleW(file, final.data(), static_cast<DWORD>(final.size()), 0);
  if (length == 0 || length >= final.size()) return path;
  final.resize(length);
  return final;
}

Destination Resolve(const fs::path& target) {
  Destination to;
  to.file = target;
  const Handle file(CreateFileW(target.c_str(), FILE_READ_ATTRIBUTES, kShareAll, nullptr,
                                OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  if (!file) {
    const DWORD error = GetLastError();
    if (error != ERROR_FILE_NOT_FOUND) to.error = error;
    return to;
  }
  BY_HANDLE_FILE_INFORMATION info = {};
  to.replaceable = GetFileType(file.Get()) == FILE_TYPE_DISK;
  if (!to.replaceable || !GetFileInformationByHandle(file.Get(), &info)) return to;
  constexpr DWORD kNotToReplace = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY;
  if (info.dwFileAttributes & kNotToReplace) to.error = ERROR_ACCESS_DENIED;
  to.file = FinalPath(file.Get(), target);
  return to;
}

// A new file that is being written is open; no other program can have it for itself.
void RemoveLeftOvers(const fs::path& folder) {
  std::error_code error;
  for (fs::directory_iterator entry(folder.empty() ? "." : folder, error), end;
       !error && entry != end; entry.increment(error)) {
    if (!IsTemporaryName(entry->path().filename())) continue;
    const Handle alone(CreateFileW(entry->path().c_str(), GENERIC_READ | DELETE, 0, nullptr,
                                   OPEN_EXISTING, FILE_FLAG_DELETE_ON_CLOSE, nullptr));
  }
}

// A new file, open as long as the handle lives; the handle is none when there was an error.
struct NewFile {
  Handle file;
  fs::path path;
  DWORD error = ERROR_SUCCESS;
};

NewFile CreateBeside(const fs::path& target) {
  constexpr int kMostTries = 100;
  for (int i = 0; i < kMostTries; ++i) {
    const fs::path path = TemporaryPathBeside(target);
    Handle made(CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, kShareAll, nullptr,
                            CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (made) return {std::move(made), path, ERROR_SUCCESS};
    if (GetLastError() != ERROR_FILE_EXISTS) return {Handle(nullptr), {}, GetLastError()};
  }
  return {Handle(nullptr), {}, ERROR_FILE_EXISTS};
}

// Gives the bytes of a file to a device or a pipe.
DWORD CopyInto(const fs::path& target, const Handle& file) {
  const Handle to(
      CreateFileW(target.c_str(), GENERIC_WRITE, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr));
  if (!to) return GetLastError();
  std::vector<char> block(std::size_t{1} << 16);
  if (!SetFilePointerEx(file.Get(), {}, nullptr, FILE_BEGIN)) return GetLastError();
  for (;;) {
    DWORD got = 0, written = 0;
    const auto size = static_cast<DWORD>(block.size());
    if (!ReadFile(file.Get(), block.data(), size, &got, nullptr)) return GetLastError();
    if (got == 0) return ERROR_SUCCESS;
    if (!WriteFile(to.Get(), block.data(), got, &written, nullptr)) return GetLastError();
    if (written != got) return ERROR_WRITE_FAULT;
  }
}

// Virus scanners and indexers hold a new file open for a moment.
DWORD MoveInPlace(const fs::path& from, const fs::path& to) {
  constexpr int kMostTries = 10;
  constexpr DWORD kPauseInMilliseconds = 20;
  for (int tries = 1;; ++tries) {
    if (MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
      return ERROR_SUCCESS;
    }
    const DWORD error = GetLastError();
    const bool mayPass = error == ERROR_SHARING_VIOLATION || error == ERROR_ACCESS_DENIED;
    if (!mayPass || tries == kMostTries) return error;
    Sleep(kPauseInMilliseconds);
  }
}

class SharedFile final : public GrowingFile {
 public:
  explicit SharedFile(Handle opened) : file(std::move(opened)) {}

  bool Append(std::string_view bytes) override {
    LARGE_INTEGER end = {};
    if (!SetFilePointerEx(file.Get(), {}, &end, FILE_END)) return false;
    DWORD written = 0;
    const auto size = static_cast<DWORD>(bytes.size());
    if (WriteFile(file.Get(), bytes.data(), size, &written, nullptr) && written == size) {
      return true;
    }
    if (written > 0 && SetFilePointerEx(file.Get(), end, nullptr, FILE_BEGIN)) {
      SetEndOfFile(file.Get());
    }
    return false;
  }

  bool Flush() override { return FlushFileBuffers(file.Get()); }

  bool EndsInLineFeed() override {
    LARGE_INTEGER size = {};
    if (!GetFileSizeEx(file.Get(), &size) || size.QuadPart == 0) return true;
    LARGE_INTEGER last = {};
    last.QuadPart = size.QuadPart - 1;
    char byte = '\n';
    DWORD count = 0;
    return !SetFilePointerEx(file.Get(), last, nullptr, FILE_BEGIN) ||
           !ReadFile(file.Get(), &byte, 1, &count, nullptr) || byte == '\n';
  }

 private:
  Handle file;
};

// A reader at the other end sees a finished file or nothing of it.
std::optional<std::string> Pipe(const fs::path& target, const Files::WriteFile& write) {
  std::error_code error;
  const fs::path folder = fs::temp_directory_path(error);
  if (error) return ReasonOf(static_cast<DWORD>(error.value()));
  NewFile made = CreateBeside(folder / target.filename());
  if (made.error) return ReasonOf(made.error);
  const TemporaryFile temporary(made.path);
  if (!write(made.path)) return "";
  const DWORD failure = CopyInto(target, made.file);
  { const Handle closed = std::move(made.file); }
  return failure ? std::optional(ReasonOf(failure)) : std::nullopt;
}

// The file is open up to here, so that nobody takes it for a left-over meanwhile.
std::optional<std::string> PutInPlace(const fs::path& finished, const Handle& file,
                                      const Destination& to) {
  if (!FlushFileBuffers(file.Get())) return ReasonOf(GetLastError());
  const DWORD error = MoveInPlace(finished, to.file);
  return error ? std::optional(ReasonOf(error)) : std::nullopt;
}

class FileService final : public Files {
 public:
  std::optional<std::string> Replace(const fs::path& target, const WriteFile& write) override {
    const Destination to = Resolve(target);
    if (to.error) return ReasonOf(to.error);
    if (!to.replaceable) return Pipe(target, write);
    RemoveLeftOvers(to.file.parent_path());
    const NewFile made = CreateBeside(to.file);
    if (made.error) return ReasonOf(made.error);
    const TemporaryFile temporary(made.path);
    return write(made.path) ? PutInPlace(made.path, made.file, to) : "";
  }

  std::optional<std::string> Move(const fs::path& finished, const fs::path& target) override {
    const Destination to = Resolve(target);
    if (to.error) return ReasonOf(to.error);
    if (!to.replaceable) return ReasonOf(ERROR_INVALID_PARAMETER);
    const Handle file(CreateFileW(finished.c_str(), GENERIC_READ | GENERIC_WRITE, kShareAll,
                                  nullptr, OPEN_EXISTING, 0, nullptr));
    return file ? PutInPlace(finished, file, to) : ReasonOf(GetLastError());
  }

  std::unique_ptr<GrowingFile> OpenGrowing(const fs::path& path, bool writeThrough) override {
    Handle file(CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE,
                            FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS,
                            FILE_ATTRIBUTE_NORMAL | (writeThrough ? FILE_FLAG_WRITE_THROUGH : 0),
                            nullptr));
    return file ? std::make_unique<SharedFile>(std::move(file)) : nullptr;
  }

  bool CanReadAndWrite(const fs::path& path) override {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) return false;
    // In a folder the attribute protects the folder's own entry, not what is made in it.
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) || !(attributes & FILE_ATTRIBUTE_READONLY);
  }

  fs::path ModuleOf(const void* address) override {
    HMODULE module = nullptr;
    constexpr DWORD kByAddress =
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    if (!address ||
        !GetModuleHandleExW(kByAddress, static_cast<const wchar_t*>(address), &module)) {
      return {};
    }
    return ModulePath(module);
  }
};

}  // namespace

Files& SystemFiles() {
  static FileService files;
  return files;
}

}  // namespace platform
