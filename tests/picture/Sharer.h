// What the sharer process and the tests of shared pictures agree on.
#pragma once

#include <atomic>
#include <random>
#include <string>

inline constexpr int kSharedWidth = 40;
inline constexpr int kSharedHeight = 30;
// On Windows, where a process that is killed has a status like any other.
inline constexpr int kKilledStatus = 99;

// Of a heap that nobody else has.
inline std::string FreshId() {
  static std::atomic<int> count{0};
  return "FxboxHeapTest" + std::to_string(std::random_device()()) + "-" + std::to_string(++count);
}
