#include "tests/support/Allocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> count{0};

void* Allocate(std::size_t size) noexcept {
  ++count;
  return std::malloc(size ? size : 1);
}

void* AllocateOrThrow(std::size_t size) {
  if (void* block = Allocate(size)) return block;
  throw std::bad_alloc();
}

}  // namespace

namespace testing_support {
long AllocationCount() {
  return count;
}
}  // namespace testing_support

void* operator new(std::size_t size) {
  return AllocateOrThrow(size);
}
void* operator new[](std::size_t size) {
  return AllocateOrThrow(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return Allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return Allocate(size);
}
void operator delete(void* block) noexcept {
  std::free(block);
}
void operator delete[](void* block) noexcept {
  std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
  std::free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
  std::free(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
  std::free(block);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept {
  std::free(block);
}
