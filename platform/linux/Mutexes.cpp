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
#include <sys/syscall.h>
#include <time.h>

#include <atomic>

#include "platform/SystemServices.h"
#include "platform/linux/Descriptor.h"

namespace platform {
namespace {

// Whoever waits holds `next` while he does: an owner that releases the mutex and wants it again
// comes behind him there, or he could wait for ever.
struct SharedPiece {
  std::uint32_t ready;  // kReady once the mutexes are made
  pthread_mutex_t next;
  pthread_mutex_t mutex;
  std::atomic<pid_t> owner;  // thread, 0 while there is none
  std::uint32_t depth;       // how often the owner has it; his own
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
  const bool made = MakeMutex(piece->next) && MakeMutex(piece->mutex);
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
    const auto thread = static_cast<pid_t>(syscall(SYS_gettid));
    if (piece->owner == thread) {
      const Wait again = ResultOf(pthread_mutex_trylock(&piece->mutex), piece->mutex);
      if (again != Wait::TimedOut) return Taken(again, thread);  // of a dead one of this number
      ++piece->depth;
      return Wait::Held;
    }
    const timespec end = EndOf(limit);
    const Wait turn = ResultOf(pthread_mutex_timedlock(&piece->next, &end), piece->next);
    if (turn == Wait::TimedOut || turn == Wait::Failed) return turn;
    const Wait result = ResultOf(pthread_mutex_timedlock(&piece->mutex, &end), piece->mutex);
    pthread_mutex_unlock(&piece->next);
    return Taken(result, thread);
  }

  void Release() override {
    if (--piece->depth > 0) return;
    piece->owner = 0;
    pthread_mutex_unlock(&piece->mutex);
  }

 private:
  static timespec EndOf(std::chrono::milliseconds limit) {
    constexpr long kNanosecondsASecond = 1'000'000'000;
    timespec end = {};
    clock_gettime(CLOCK_REALTIME, &end);
    end.tv_sec += limit.count() / 1000;
    end.tv_nsec += limit.count() % 1000 * 1'000'000;
    if (end.tv_nsec >= kNanosecondsASecond) {
      end.tv_nsec -= kNanosecondsASecond;
      ++end.tv_sec;
    }
    return end;
  }

  static Wait ResultOf(int error, pthread_mutex_t& mutex) {
    switch (error) {
      case 0:
        return Wait::Held;
      case EOWNERDEAD:
        pthread_mutex_consistent(&mutex);
        return Wait::Abandoned;
      case EBUSY:
      case ETIMEDOUT:
        return Wait::TimedOut;
      default:
        return Wait::Failed;
    }
  }

  Wait Taken(Wait result, pid_t thread) {
    if (result == Wait::Held || result == Wait::Abandoned) {
      piece->owner = thread;
      piece->depth = 1;
    }
    return result;
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
