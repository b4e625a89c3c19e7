// What replacing a file has in common on all systems: the name of the new file, and its end.
#pragma once

#include <filesystem>

namespace platform {

// A path that is likely to be free, in the folder of `target` and with its extension, for code that
// goes by the extension. The name does not grow with that of the target.
std::filesystem::path TemporaryPathBeside(const std::filesystem::path& target);

// Whether a file name has the form that TemporaryPathBeside gives.
bool IsTemporaryName(const std::filesystem::path& name);

// Deletes the file at the end of its life. One that was moved to its place is not there any more.
class TemporaryFile {
 public:
  explicit TemporaryFile(std::filesystem::path made) : path(std::move(made)) {}
  ~TemporaryFile() {
    std::error_code ignored;
    std::filesystem::remove(path, ignored);
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  const std::filesystem::path& Path() const { return path; }

 private:
  std::filesystem::path path;
};

}  // namespace platform
