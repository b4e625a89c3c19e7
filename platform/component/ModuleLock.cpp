#include "platform/component/ModuleLock.h"

#include <atomic>

namespace platform {
namespace {
std::atomic<long> held{0};
}

void ModuleLock::Add() {
  held.fetch_add(1, std::memory_order_relaxed);
}
void ModuleLock::Remove() {
  held.fetch_sub(1, std::memory_order_release);
}
bool ModuleLock::AnyHeld() {
  return held.load(std::memory_order_acquire) > 0;
}

}  // namespace platform
