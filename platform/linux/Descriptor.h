// An open file of the system.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <string_view>
#include <system_error>
#include <utility>

namespace platform {

inline std::error_code LastError() {
  return {errno, std::generic_category()};
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
