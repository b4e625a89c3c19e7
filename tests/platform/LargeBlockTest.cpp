#include "platform/LargeBlock.h"

#include <gtest/gtest.h>
#ifdef __linux__
#include <malloc.h>
#endif

#include <algorithm>
#include <cstdlib>
#include <set>
#include <thread>
#include <vector>

namespace {

using platform::AllocateLarge;
using platform::FreeKeptBlocks;
using platform::FreeLarge;

constexpr std::size_t kMegabyte = std::size_t{1} << 20;

// A sanitizer is to see who uses a block that was freed.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kKeepsBlocks = false;
#else
constexpr bool kKeepsBlocks = true;
#endif

TEST(LargeBlock, ComesAgainForWhatFitsIt) {
  if (!kKeepsBlocks) GTEST_SKIP() << "a sanitizer wants them freed";
  void* const block = AllocateLarge(8 * kMegabyte);
  FreeLarge(block);
  void* const larger = AllocateLarge(8 * kMegabyte + 1);
  void* const muchSmaller = AllocateLarge(5 * kMegabyte);
  EXPECT_NE(larger, block);
  EXPECT_NE(muchSmaller, block);
  void* const smaller = AllocateLarge(7 * kMegabyte);
  EXPECT_EQ(smaller, block);
  for (void* used : {larger, muchSmaller, smaller}) FreeLarge(used);
  FreeKeptBlocks();
}

// Of one block too many the first is given back, whatever their size. None serves for a small one.
TEST(LargeBlock, IsKeptInSmallNumbers) {
  if (!kKeepsBlocks) GTEST_SKIP() << "a sanitizer wants them freed";
  constexpr std::size_t kKept = 64;
  const auto size = [](std::size_t i) { return kMegabyte + i * 4096; };
  std::vector<void*> blocks;
  for (std::size_t i = 0; i <= kKept; ++i) blocks.push_back(AllocateLarge(size(i)));
  for (void* block : blocks) FreeLarge(block);
  void* const small = AllocateLarge(kMegabyte - 1);
  EXPECT_EQ(std::count(blocks.begin() + 1, blocks.end(), small), 0);
  FreeLarge(small);
  std::set<void*> again;
  for (std::size_t i = 1; i <= kKept; ++i) again.insert(AllocateLarge(size(i)));
  EXPECT_EQ(again, std::set<void*>(blocks.begin() + 1, blocks.end()));
  for (void* block : again) FreeLarge(block);
  FreeKeptBlocks();
}

#ifdef __GLIBC__
TEST(LargeBlock, GoesBackToTheSystemWhenAllAreFreed) {
  const std::size_t before = mallinfo2().hblkhd;
  FreeLarge(AllocateLarge(100 * kMegabyte));
  FreeKeptBlocks();
  EXPECT_EQ(mallinfo2().hblkhd, before);
  FreeLarge(AllocateLarge(513 * kMegabyte));
  EXPECT_EQ(mallinfo2().hblkhd, before) << "too large to be kept";
}
#endif

TEST(LargeBlock, IsFreedWhoeverMadeIt) {
  FreeLarge(nullptr);
  FreeLarge(std::malloc(10));
  FreeLarge(std::malloc(10 * kMegabyte));
  FreeLarge(AllocateLarge(0));
  FreeLarge(AllocateLarge(10));
}

TEST(LargeBlock, BelongsToOneThreadAtATime) {
  const auto work = [](unsigned char mark) {
    for (int round = 0; round < 200; ++round) {
      const std::size_t bytes = (2 + static_cast<std::size_t>(round) % 3) * kMegabyte;
      auto* const block = static_cast<unsigned char*>(AllocateLarge(bytes));
      for (std::size_t i = 0; i < bytes; i += 4096) block[i] = mark;
      std::this_thread::yield();
      for (std::size_t i = 0; i < bytes; i += 4096) ASSERT_EQ(block[i], mark);
      FreeLarge(block);
    }
  };
  std::thread others[] = {std::thread(work, 1), std::thread(work, 2)};
  work(3);
  for (std::thread& other : others) other.join();
  FreeKeptBlocks();
}

}  // namespace
