// Named mutexes: robust ones of the thread library, each in a small piece of shared memory.
//
//   /dev/shm/fxbox4-UID-NAME
//
// The thread library tells a waiter that the owner before died, be it a thread or a whole process,
// and a forked child owns nothing, which locks on files could not tell. Everyone who has the mutex
// open holds a shared lock on the piece: who gets it exclusively is alone, and makes the mutex anew
// when he comes and deletes its name when he goes, so that nothing of an earlier run is left.
#include <fcntl.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <time.h>

#include <cstring>

#include "platform/SystemServices.h"
#include "platform/linux/Descriptor.h"

namespace platform {
namespace {

struct SharedPiece {
  std::uint32_t ready;  // kReady once the mutex is made
  pthread_mutex_t mutex;
};
constexpr std::uint32_t kReady = 0x6D757430 + sizeof(SharedPiece);

// The name of the piece: slashes and dots would lead elsewhere, and all lie in one folder.
std::string PieceName(const std::string& name) {
  constexpr std::size_t kLongest = 200;
  std::string piece = "/fxbox4-" + std::to_string(geteuid()) + "-";
  for (const char c : name.substr(0, kLongest)) piece += c == '/' || c == '\0' ? '_' : c;
  return piece;
}

// Locks a file; with `wait` until it is had.
bool Lock(const Descriptor& file, int kind, bool wait) {
  while (flock(file.Get(), kind | (wait ? 0 : LOCK_NB)) != 0) {
    if (errno != EINTR) return false;
  }
  return true;
}

bool MakeMutex(pthread_mutex_t& mutex) {
  pthread_mutexattr_t attributes;
  if (pthread_mutexattr_init(&attributes) != 0) return false;
  const bool made = pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED) == 0 &&
                    pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST) == 0 &&
                    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE) == 0 &&
                    pthread_mutex_init(&mutex, &attributes) == 0;
  pthread_mutexattr_destroy(&attributes);
  return made;
}

// The piece in this process's memory; null when it cannot be had.
SharedPiece* Map(const Descriptor& file) {
  void* const memory =
      mmap(nullptr, sizeof(SharedPiece), PROT_READ | PROT_WRITE, MAP_SHARED, file.Get(), 0);
  return memory == MAP_FAILED ? nullptr : static_cast<SharedPiece*>(memory);
}

bool IsComplete(const Descriptor& file) {
  struct stat status = {};
  return fstat(file.Get(), &status) == 0 && status.st_size == sizeof(SharedPiece) &&
         status.st_uid == geteuid();
}

// Makes the mutex of a piece that nobody else has open.
bool MakePiece(const Descriptor& file) {
  if (ftruncate(file.Get(), 0) != 0 || ftruncate(file.Get(), sizeof(SharedPiece)) != 0) {
    return false;
  }
  SharedPiece* const piece = Map(file);
  if (!piece) return false;
  const bool made = MakeMutex(piece->mutex);
  if (made) piece->ready = kReady;
  munmap(piece, sizeof(SharedPiece));
  return made;
}

bool HasName(const Descriptor& file) {
  struct stat status = {};
  return fstat(file.Get(), &status) == 0 && status.st_nlink > 0;
}

class RobustMutex final : public NamedMutex {
 public:
  RobustMutex(std::string named, Descriptor opened, SharedPiece* mapped)
      : name(std::move(named)), file(std::move(opened)), piece(mapped), owner(getpid()) {}

  ~RobustMutex() override {
    munmap(piece, sizeof(SharedPiece));
    // A forked child shares its parent's lock and must leave it alone.
    if (getpid() == owner && Lock(file, LOCK_EX, false) && HasName(file)) {
      shm_unlink(name.c_str());
    }
  }

  Wait WaitFor(std::chrono::milliseconds limit) override {
    switch (pthread_mutex_trylock(&piece->mutex)) {
      case 0:
        return Wait::Held;
      case EBUSY:
        break;
      case EOWNERDEAD:
        return TakeOver();
      default:
        return Wait::Failed;
    }
    constexpr long kNanosecondsASecond = 1'000'000'000;
    timespec end = {};
    clock_gettime(CLOCK_REALTIME, &end);
    end.tv_sec += limit.count() / 1000;
    end.tv_nsec += limit.count() % 1000 * 1'000'000;
    if (end.tv_nsec >= kNanosecondsASecond) {
      end.tv_nsec -= kNanosecondsASecond;
      ++end.tv_sec;
    }
    switch (pthread_mutex_timedlock(&piece->mutex, &end)) {
      case 0:
        return Wait::Held;
      case EOWNERDEAD:
        return TakeOver();
      case ETIMEDOUT:
        return Wait::TimedOut;
      default:
        return Wait::Failed;
    }
  }

  void Release() override { pthread_mutex_unlock(&piece->mutex); }

 private:
  Wait TakeOver() {
    pthread_mutex_consistent(&piece->mutex);
    return Wait::Abandoned;
  }

  const std::string name;
  const Descriptor file;
  SharedPiece* const piece;
  const pid_t owner;
};

class MutexService final : public Mutexes {
 public:
  std::unique_ptr<NamedMutex> Open(const std::string& name) override {
    constexpr int kMostTries = 100;
    const std::string pieceName = PieceName(name);
    for (int i = 0; i < kMostTries; ++i) {
      Descriptor file(shm_open(pieceName.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
      if (!file) return nullptr;
      if (Lock(file, LOCK_EX, false) && !MakePiece(file)) return nullptr;
      if (!Lock(file, LOCK_SH, true)) return nullptr;
      // Between its opening and the lock the last other one may have deleted it, or died over it.
      if (!HasName(file)) continue;
      if (!IsComplete(file)) continue;
      SharedPiece* const piece = Map(file);
      if (!piece) return nullptr;
      if (piece->ready == kReady) {
        return std::make_unique<RobustMutex>(pieceName, std::move(file), piece);
      }
      munmap(piece, sizeof(SharedPiece));
    }
    return nullptr;
  }
};

}  // namespace

Mutexes& SystemMutexes() {
  static MutexService mutexes;
  return mutexes;
}

}  // namespace platform
