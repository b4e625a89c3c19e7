// An open file of the system.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

namespace platform {

inline std::error_code LastError() {
  return {errno, std::generic_category()};
}

// Why the file of the path did not open just now: errno, with ENOTDIR in place of ENOENT where the
// folders that lead to it are missing as well.
inline int OpenErrorOf(const std::filesystem::path& path) {
  const int error = errno;
  std::error_code ignored;
  const auto folder = path.has_parent_path() ? path.parent_path() : std::filesystem::path(".");
  const bool hasFolder = !path.empty() && std::filesystem::is_directory(folder, ignored);
  return error == ENOENT && !hasFolder ? ENOTDIR : error;
}

// Owns a descriptor and closes it; a negative number is none.
class Descriptor {
 public:
  explicit Descriptor(int opened) : number(opened) {}
  ~Descriptor() {
    if (number >= 0) close(number);
  }
  Descriptor(Descriptor&& other) noexcept : number(std::exchange(other.number, -1)) {}
  Descriptor& operator=(Descriptor&&) = delete;

  explicit operator bool() const { return number >= 0; }
  int Get() const { return number; }

 private:
  int number;
};

// Writes all bytes, whatever pieces the system takes; 0 or the error. `rest` is what is left.
inline int WriteAll(int descriptor, std::string_view& rest) {
  while (!rest.empty()) {
    const ssize_t written = write(descriptor, rest.data(), rest.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return written < 0 ? errno : EIO;
    rest.remove_prefix(static_cast<std::size_t>(written));
  }
  return 0;
}

}  // namespace platform
