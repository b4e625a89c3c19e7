// An open file of the system.
#pragma once

#include <unistd.h>

#include <cerrno>
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

}  // namespace platform
