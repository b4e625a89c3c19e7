// Asking the processor for memory ahead of its use, where it does not foresee that by itself.
#pragma once

#include <cstddef>
#include <cstdint>

namespace base {

inline constexpr int kForReading = 0;
inline constexpr int kForWriting = 1;

template <int kUse>
inline void Announce(const std::uint8_t* at, std::size_t bytes) {
  constexpr std::size_t kCacheLine = 64;
  for (std::size_t i = 0; i < bytes; i += kCacheLine) {
    __builtin_prefetch(at + i, kUse);
    asm volatile("");  // without it the compiler takes the loop for empty
  }
}

}  // namespace base
