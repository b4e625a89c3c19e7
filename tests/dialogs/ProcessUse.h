// What this process uses: memory of its own in bytes, and processor time in milliseconds.
#pragma once

#include <cstddef>

#ifdef _WIN32
#include <windows.h>
// behind windows.h
#include <psapi.h>

inline std::size_t ProcessMemory() {
  PROCESS_MEMORY_COUNTERS counters = {};
  K32GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
  return counters.PagefileUsage;
}

inline double ProcessTime() {
  FILETIME created, ended, kernel, user;
  GetProcessTimes(GetCurrentProcess(), &created, &ended, &kernel, &user);
  const auto ticks = [](const FILETIME& time) {
    return static_cast<double>(static_cast<unsigned long long>(time.dwHighDateTime) << 32 |
                               time.dwLowDateTime);
  };
  return (ticks(kernel) + ticks(user)) / 10000;
}
#else
#include <unistd.h>

#include <ctime>
#include <fstream>

inline std::size_t ProcessMemory() {
  std::size_t size = 0, resident = 0, shared = 0;
  std::ifstream("/proc/self/statm") >> size >> resident >> shared;
  return (resident - shared) * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

inline double ProcessTime() {
  return static_cast<double>(std::clock()) * 1000 / CLOCKS_PER_SEC;
}
#endif
