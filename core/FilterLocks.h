// What keeps threads apart that use one filter at the same time.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>

#include "base/Export.h"

// A mark that a pull can take back as far as it has seen it, so that what is set meanwhile stays.
class ChangeFlag {
 public:
  explicit ChangeFlag(bool set) : raised(set ? 1 : 0) {}

  operator bool() const { return raised != cleared; }
  // False clears it, whenever it was set.
  bool operator=(bool set) {
    if (set) {
      ++raised;
    } else {
      cleared = raised.load();
    }
    return set;
  }

  // How often it was set until now.
  std::uint32_t Count() const { return raised; }
  // One thread at a time.
  void ClearUpTo(std::uint32_t count) { cleared = count; }

 private:
  std::atomic<std::uint32_t> raised;
  std::atomic<std::uint32_t> cleared{0};
};

// The lock of a filter's fields, which its holder may take again. It is held for moments only and
// never during a call to another filter or the host.
class FXBOX_API StateLock {
 public:
  void lock();
  void unlock() { mutex.unlock(); }
  // Whether another thread waits for it. Any thread may ask.
  bool IsWanted() const { return waiting != 0; }
  // For a pull that works on many rows with what the lock guards, between two of them: whoever
  // waits has the lock first. The holder must have taken it once.
  void GiveWay() {
    if (IsWanted()) LetOthersHaveIt();
  }

 private:
  void LetOthersHaveIt();

  std::recursive_mutex mutex;
  std::atomic<int> waiting{0};
};

// Lets one pull at a time through a filter. A pull holds its turn during the upstream call, so that
// turns are taken from the tail of a chain to its head.
class FXBOX_API PullGate {
 public:
  // Waits for the pull of another thread. False when an abort came meanwhile, and for a pull that
  // comes from within itself.
  bool Enter(const std::atomic<bool>& abort);
  void Leave();
  // Whether the turn is that of the calling thread.
  bool IsMine() const { return holder == std::this_thread::get_id(); }
  // Ends the waiting, once the abort flag is set.
  void Abort();

 private:
  bool Wait(const std::atomic<bool>& abort);

  // The pulling thread, or none.
  std::atomic<std::thread::id> holder{std::thread::id()};
  std::atomic<int> waiting{0};
  std::mutex mutex;
  std::condition_variable freed;
  std::uint32_t aborts = 0;  // an abort that is taken back at once counts, too
};
