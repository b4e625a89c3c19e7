// An open file of the system.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
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
  if (errno != ENOENT) return errno;
  std::error_code ignored;
  const bool hasFolder =
      !path.empty() && std::filesystem::is_directory(path.parent_path() / ".", ignored);
  return hasFolder ? ENOENT : ENOTDIR;
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

// How many bytes were moved, and why no more: 0 at the end of the file, or the error.
struct Moved {
  std::size_t bytes;
  int error;
};

// `move` moves some of what is left behind so many bytes, as the system's calls do.
template <class Move>
Moved MoveAll(std::size_t count, Move move) {
  std::size_t done = 0;
  while (done < count) {
    const ssize_t moved = move(done);
    if (moved < 0 && errno == EINTR) continue;
    if (moved <= 0) return {done, moved < 0 ? errno : 0};
    done += static_cast<std::size_t>(moved);
  }
  return {done, 0};
}

// Writes all bytes, whatever pieces the system takes; 0 or the error. `rest` is what is left.
inline int WriteAll(int descriptor, std::string_view& rest) {
  const Moved written = MoveAll(rest.size(), [&](std::size_t done) {
    return write(descriptor, rest.data() + done, rest.size() - done);
  });
  rest.remove_prefix(written.bytes);
  return rest.empty() || written.error ? written.error : EIO;
}

// At any place of a file; where the descriptor stands does not matter and stays.
inline Moved ReadAllAt(int descriptor, std::uint64_t offset, void* to, std::size_t count) {
  return MoveAll(count, [=](std::size_t done) {
    return pread(descriptor, static_cast<char*>(to) + done, count - done,
                 static_cast<off_t>(offset + done));
  });
}
inline Moved WriteAllAt(int descriptor, std::uint64_t offset, const void* from, std::size_t count) {
  return MoveAll(count, [=](std::size_t done) {
    return pwrite(descriptor, static_cast<const char*>(from) + done, count - done,
                  static_cast<off_t>(offset + done));
  });
}

}  // namespace platform
