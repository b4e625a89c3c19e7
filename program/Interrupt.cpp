#include "program/Interrupt.h"

#include <atomic>
#include <chrono>
#include <utility>

#include "platform/Services.h"

namespace program {
namespace {

std::atomic<bool> interrupted{false};

}  // namespace

void CatchInterrupts() {
  platform::CurrentServices().terminal->OnInterrupt([] { interrupted = true; });
}

bool IsInterrupted() {
  return interrupted;
}

AbortOnInterrupt::AbortOnInterrupt(IAnimFilterDestCallsThis& pulled,
                                   std::function<bool()> isStopped)
    : tail(pulled), stopped(std::move(isStopped)), watcher([this] { Watch(); }) {}

AbortOnInterrupt::~AbortOnInterrupt() {
  {
    const std::lock_guard hold(lock);
    over = true;
  }
  wake.notify_one();
  watcher.join();
}

void AbortOnInterrupt::Watch() {
  constexpr std::chrono::milliseconds kPause(20);
  std::unique_lock hold(lock);
  while (!wake.wait_for(hold, kPause, [this] { return over; })) {
    if (!stopped()) continue;
    tail.SetAbort(true);
    return;
  }
}

}  // namespace program
