#include "platform/LargeBlock.h"

#include <sys/mman.h>

#include <cstdint>

namespace platform {

void AnnounceWholeUse(void* block, std::size_t bytes) {
  constexpr std::uintptr_t kPage = 4096;
  // Smaller blocks hold too few large pages, and may share their ends with other blocks.
  constexpr std::size_t kLargeFrom = std::size_t{4} << 20;
  if (bytes < kLargeFrom) return;
  const auto begin = (reinterpret_cast<std::uintptr_t>(block) + kPage - 1) / kPage * kPage;
  const auto end = (reinterpret_cast<std::uintptr_t>(block) + bytes) / kPage * kPage;
  madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
}

}  // namespace platform
