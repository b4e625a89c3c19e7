#include "platform/linux/SharedObject.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <memory>

namespace platform {
namespace {

constexpr char kFolder[] = "/dev/shm";

// Of the names of this user, with the slash in front.
std::string Prefix() {
  return "/fxbox4-" + std::to_string(geteuid()) + "-";
}

// FNV-1a of 64 bits; two of them with different starts make collisions a matter of theory.
std::uint64_t Hash(std::string_view text, std::uint64_t hash) {
  for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3;
  return hash;
}

// Locks a file; with `wait` until it is had.
bool Lock(const Descriptor& file, int kind, bool wait) {
  while (flock(file.Get(), kind | (wait ? 0 : LOCK_NB)) != 0) {
    if (errno != EINTR) return false;
  }
  return true;
}

}  // namespace

std::string SharedObjectPath(std::string_view kind, std::string_view name) {
  const std::string text = std::string(kind) + '\0' + std::string(name);
  char hash[33];
  std::snprintf(hash, sizeof hash, "%016llx%016llx",
                static_cast<unsigned long long>(Hash(text, 0xCBF29CE484222325)),
                static_cast<unsigned long long>(Hash(text, 0x6C62272E07BB0142)));
  return Prefix() + hash;
}

SharedObject::SharedObject(std::string pathOfObject, Descriptor opened)
    : path(std::move(pathOfObject)), file(std::move(opened)), owner(getpid()) {}

SharedObject::~SharedObject() {
  if (file && getpid() == owner && Lock(file, LOCK_EX, false) && HasName()) {
    shm_unlink(path.c_str());
  }
}

std::optional<SharedObject> SharedObject::Open(std::string_view kind, std::string_view name,
                                               std::size_t bytes, Make make) {
  const std::string path = SharedObjectPath(kind, name);
  Descriptor opened(shm_open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
  if (!opened) return std::nullopt;
  SharedObject object(path, std::move(opened));
  if (Lock(object.file, LOCK_EX, false) && object.HasName() && !make(object, bytes)) {
    return std::nullopt;
  }
  if (!Lock(object.file, LOCK_SH, true)) return std::nullopt;
  // Between its opening and the lock the last other one may have deleted it, or died over it.
  struct stat status = {};
  if (fstat(object.file.Get(), &status) != 0 || status.st_uid != geteuid()) return std::nullopt;
  if (status.st_nlink > 0) object.size = static_cast<std::size_t>(status.st_size);
  return object;
}

bool SharedObject::HasName() const {
  struct stat status = {};
  return fstat(file.Get(), &status) == 0 && status.st_nlink > 0;
}

// A write to memory that was not put aside would end the process when there is none left.
bool SharedObject::Resize(std::size_t bytes) const {
  if (bytes > PTRDIFF_MAX || ftruncate(file.Get(), 0) != 0) return false;
  int error;
  do {
    error = posix_fallocate(file.Get(), 0, static_cast<off_t>(bytes));
  } while (error == EINTR);
  return error == 0;
}

void* SharedObject::Map(std::size_t bytes) const {
  void* const memory = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, file.Get(), 0);
  return memory == MAP_FAILED ? nullptr : memory;
}

void RemoveSharedLeftovers() {
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir(kFolder), closedir);
  if (!folder) return;
  const std::string prefix = Prefix();
  while (const dirent* entry = readdir(folder.get())) {
    const std::string path = std::string("/").append(entry->d_name);
    if (path.compare(0, prefix.size(), prefix) != 0) continue;
    const Descriptor file(shm_open(path.c_str(), O_RDWR | O_CLOEXEC, 0));
    struct stat status = {};
    if (file && Lock(file, LOCK_EX, false) && fstat(file.Get(), &status) == 0 &&
        status.st_nlink > 0) {
      shm_unlink(path.c_str());
    }
  }
}

}  // namespace platform
