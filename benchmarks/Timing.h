// How long calls take.
#pragma once

#include <algorithm>
#include <chrono>
#include <vector>

namespace benchmarks {

template <class Work>
double Seconds(Work work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
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
