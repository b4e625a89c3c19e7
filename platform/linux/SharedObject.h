// Named objects in shared memory, each of which goes with its last user.
//
//   /dev/shm/fxbox4-UID-HASH      HASH: of kind and name
//
// Everyone who has an object open holds a shared lock on it. Who gets the lock exclusively is
// alone: he makes the object anew when he comes, so that nothing of dead processes is left in it,
// and deletes its name when he goes.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "platform/linux/Descriptor.h"

namespace platform {

// An open object of the user's own, which others may have open too. A forked child shares its
// parent's lock and must leave the name alone, so only the process that opened it deletes it.
class SharedObject {
 public:
  // Makes an object that nobody else has open; false gives up.
  using Make = bool (*)(const SharedObject& object, std::size_t bytes);

  // One try. Nothing when the object cannot be had; an object without a size when it went away or
  // is not made yet, and the caller tries again.
  static std::optional<SharedObject> Open(std::string_view kind, std::string_view name,
                                          std::size_t bytes, Make make);
  ~SharedObject();
  SharedObject(SharedObject&& other) noexcept = default;
  SharedObject& operator=(SharedObject&&) = delete;

  // 0 for one to be tried again.
  std::size_t Size() const { return size; }
  // Gives it this size in zeros that memory is put aside for.
  bool Resize(std::size_t bytes) const;
  // Its first bytes in this process's memory, null on failure; munmap is the caller's.
  void* Map(std::size_t bytes) const;

 private:
  SharedObject(std::string path, Descriptor opened);
  bool HasName() const;

  std::string path;
  Descriptor file;
  std::size_t size = 0;
  pid_t owner;
};

// The name below /dev/shm, with a slash in front.
std::string SharedObjectPath(std::string_view kind, std::string_view name);

// How often an object that goes away while it is opened is tried.
inline constexpr int kMostTriesToShare = 100;

// Deletes the objects of this user that only dead processes used.
void RemoveSharedLeftovers();

}  // namespace platform
