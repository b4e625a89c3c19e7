// Ctrl-C: stops the work at the next row instead of ending the program in the middle of a file.
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

#include "core/AnimInterfaces.h"

namespace program {

// From now on an interrupt is remembered; a second one ends the program.
void CatchInterrupts();
bool IsInterrupted();

// While it lives, an interrupt, or what `isStopped` says, sets the abort flag along the chain. The
// handler of the interrupt may not call objects, so a thread of its own looks several times a
// second. The chain's links must not change meanwhile.
class AbortOnInterrupt {
 public:
  explicit AbortOnInterrupt(IAnimFilterDestCallsThis& pulled,
                            std::function<bool()> isStopped = IsInterrupted);
  ~AbortOnInterrupt();
  AbortOnInterrupt(const AbortOnInterrupt&) = delete;
  AbortOnInterrupt& operator=(const AbortOnInterrupt&) = delete;

 private:
  void Watch();

  IAnimFilterDestCallsThis& tail;
  const std::function<bool()> stopped;
  std::mutex lock;
  std::condition_variable wake;
  bool over = false;
  std::thread watcher;
};

}  // namespace program
