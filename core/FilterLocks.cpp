#include "core/FilterLocks.h"

void StateLock::lock() {
  if (mutex.try_lock()) return;
  ++waiting;
  mutex.lock();
  --waiting;
}

void StateLock::LetOthersHaveIt() {
  mutex.unlock();
  while (waiting != 0) std::this_thread::yield();
  mutex.lock();
}

bool PullGate::Enter(const std::atomic<bool>& abort) {
  std::thread::id found;
  if (holder.compare_exchange_strong(found, std::this_thread::get_id())) return true;
  return found != std::this_thread::get_id() && Wait(abort);
}

bool PullGate::Wait(const std::atomic<bool>& abort) {
  std::unique_lock lock(mutex);
  const std::uint32_t abortsBefore = aborts;
  bool entered = false;
  ++waiting;  // before the last look at the holder: who leaves looks at it afterwards
  freed.wait(lock, [&] {
    std::thread::id nobody;
    entered = holder.compare_exchange_strong(nobody, std::this_thread::get_id());
    return entered || abort || aborts != abortsBefore;
  });
  --waiting;
  return entered;
}

void PullGate::Leave() {
  holder = std::thread::id();
  if (waiting == 0) return;
  const std::lock_guard lock(mutex);
  freed.notify_all();
}

void PullGate::Abort() {
  const std::lock_guard lock(mutex);
  ++aborts;
  freed.notify_all();
}
