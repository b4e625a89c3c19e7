// Named mutexes: robust ones of the thread library, each in a small shared object.
//
// The thread library tells a waiter that the owner before died, be it a thread or a whole process,
// and a forked child owns nothing, which locks on files could not tell.
#include <pthread.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <atomic>

#include "platform/SystemServices.h"
#include "platform/linux/SharedObject.h"

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

bool MakeMutex(pthread_mutex_t& mutex) {
  pthread_mutexattr_t attributes;
  if (pthread_mutexattr_init(&attributes) != 0) return false;
  const bool made = pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED) == 0 &&
                    pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST) == 0 &&
                    pthread_mutex_init(&mutex, &attributes) == 0;
  pthread_mutexattr_destroy(&attributes);
  return made;
}

// Makes the mutex of a piece that nobody else has open.
bool MakePiece(const SharedObject& object, std::size_t bytes) {
  if (!object.Resize(bytes)) return false;
  auto* const piece = static_cast<SharedPiece*>(object.Map(bytes));
  if (!piece) return false;
  const bool made = MakeMutex(piece->next) && MakeMutex(piece->mutex);
  if (made) piece->ready = kReady;
  munmap(piece, bytes);
  return made;
}

class RobustMutex final : public NamedMutex {
 public:
  RobustMutex(SharedObject opened, SharedPiece* mapped)
      : object(std::move(opened)), piece(mapped) {}

  // What dead processes left behind goes with the mutex, which they shared as well.
  ~RobustMutex() override {
    munmap(piece, sizeof(SharedPiece));
    RemoveSharedLeftovers();
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

  const SharedObject object;
  SharedPiece* const piece;
};

class MutexService final : public Mutexes {
 public:
  std::unique_ptr<NamedMutex> Open(const std::string& name) override {
    RemoveSharedLeftovers();
    for (int i = 0; i < kMostTriesToShare; ++i) {
      auto object = SharedObject::Open("mutex", name, sizeof(SharedPiece), MakePiece);
      if (!object) return nullptr;
      if (object->Size() != sizeof(SharedPiece)) continue;
      auto* const piece = static_cast<SharedPiece*>(object->Map(sizeof(SharedPiece)));
      if (!piece) return nullptr;
      if (piece->ready == kReady) {
        return std::make_unique<RobustMutex>(std::move(*object), piece);
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
