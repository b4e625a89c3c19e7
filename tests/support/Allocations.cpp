#include "tests/support/Allocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {
std::atomic<long> count{0};
}

namespace testing_support {
long AllocationCount() {
  return count;
}
}  // namespace testing_support

// The other forms come here by default.
void* operator new(std::size_t size) {
  ++count;
  if (void* block = std::malloc(size ? size : 1)) return block;
  throw std::bad_alloc();
}
void operator delete(void* block) noexcept {
  std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
  std::free(block);
}
