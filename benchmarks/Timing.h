// How long calls take.
#pragma once

#include <algorithm>
#include <chrono>
#include <ctime>
#include <vector>

namespace benchmarks {

// How many threads work. One is timed by what it has of the processor, which does not count what
// other programs take of it; several are timed by the clock on the wall.
inline int timedThreads = 1;

inline double Now() {
  if (timedThreads == 1) return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration<double>(now).count();
}

template <class Work>
double Seconds(Work work) {
  const double start = Now();
  work();
  return Now() - start;
}

// Whatever else the machine does only adds to a time.
inline double Quickest(const std::vector<double>& times) {
  return *std::min_element(times.begin(), times.end());
}

// Calls for half a second altogether, but three times at least. False when a call failed.
template <class Work>
bool Repeat(Work work) {
  double spent = 0;
  for (int call = 0; call < 3 || spent < 0.5; ++call) {
    bool done = false;
    spent += Seconds([&] { done = work(); });
    if (!done) return false;
  }
  return true;
}

}  // namespace benchmarks
