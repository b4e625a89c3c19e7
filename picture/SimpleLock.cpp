#include "picture/SimpleLock.h"

void CSimpleLock::Remember() {
  ++count;
  last = std::this_thread::get_id();
}

void CSimpleLock::Enter() {
  section.lock();
  holder = std::this_thread::get_id();
  ++depth;
  Remember();
}

bool CSimpleLock::TryEnter() {
  if (holder == std::this_thread::get_id()) ++tries;
  Remember();
  return true;
}

void CSimpleLock::Leave() {
  --count;
  if (holder != std::this_thread::get_id()) return;
  if (tries > 0) {
    --tries;
    return;
  }
  if (--depth == 0) holder = std::thread::id();
  section.unlock();
}

CStackLock::CStackLock(CSimpleLock& taken, bool tryOnly) : lock(taken), isHeld(true) {
  if (tryOnly) {
    isHeld = lock.TryEnter();
  } else {
    lock.Enter();
  }
}

CStackLock::~CStackLock() {
  if (isHeld) lock.Leave();
}

void CStackLock::Enter() {
  if (isHeld) return;
  lock.Enter();
  isHeld = true;
}
