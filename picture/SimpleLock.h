// A lock for the threads of one process that knows who took it last, and its keeper.
#pragma once

#include <atomic>
#include <mutex>
#include <thread>

#include "base/Export.h"

// The thread that has it may take it again and leaves it as often.
class FXBOX_API CSimpleLock {
 public:
  CSimpleLock() = default;
  CSimpleLock(const CSimpleLock&) = delete;
  CSimpleLock& operator=(const CSimpleLock&) = delete;

  void Enter();
  // What was entered is left by the same thread. What was only tried is not held and nothing opens.
  void Leave();
  // Counts and remembers the thread, waits for nobody, excludes nobody, and is always true.
  bool TryEnter();

  bool IsLocked() const { return count != 0; }
  // Whether this thread was the last to enter or try; leaving does not change that.
  bool IsLockedByMe() const { return last == std::this_thread::get_id(); }

 private:
  void Remember();

  std::recursive_mutex section;
  std::atomic<int> count{0};
  std::atomic<std::thread::id> last{};
  // The thread within the section, which alone changes the other two.
  std::atomic<std::thread::id> holder{};
  int depth = 0;
  int tries = 0;  // of the holder; their Leave opens nothing
};

// Takes a lock while it lives. With `tryOnly` it only tries, which excludes nobody.
class FXBOX_API CStackLock {
 public:
  explicit CStackLock(CSimpleLock& taken, bool tryOnly = false);
  ~CStackLock();
  CStackLock(const CStackLock&) = delete;
  CStackLock& operator=(const CStackLock&) = delete;

  // Takes the lock unless it is held already.
  void Enter();

 private:
  CSimpleLock& lock;
  bool isHeld;
};
