#include "platform/LargeBlock.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <mutex>
#include <utility>
#include <vector>

namespace platform {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kLargeFrom = std::size_t{1} << 20;
constexpr std::size_t kMostKept = 64;
constexpr std::size_t kMostKeptBytes = std::size_t{512} << 20;
constexpr auto kKeptTime = std::chrono::seconds(10);

// A sanitizer is to see who uses a block that was freed, and whoever reads what nobody wrote.
#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(memory_sanitizer) || \
    __has_feature(thread_sanitizer)
#define FXBOX_IS_SANITIZED
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || defined(FXBOX_IS_SANITIZED)
constexpr bool kKeepsBlocks = false;
#else
constexpr bool kKeepsBlocks = true;
#endif

struct Block {
  void* memory;
  std::size_t bytes;
  Clock::time_point freed = {};
};

class KeptBlocks {
 public:
  // Null when none fits.
  void* Take(std::size_t bytes) {
    const std::lock_guard guard(lock);
    FreeOld();
    auto best = kept.end();
    for (auto at = kept.begin(); at != kept.end(); ++at) {
      const bool fits = at->bytes >= bytes && at->bytes / 4 * 3 <= bytes;
      if (fits && (best == kept.end() || at->bytes < best->bytes)) best = at;
    }
    if (best == kept.end()) return nullptr;
    used.push_back(*best);
    kept.erase(best);
    return used.back().memory;
  }

  // From now on the block is known. Without memory for that it will be freed as any other.
  void Note(void* memory, std::size_t bytes) {
    const std::lock_guard guard(lock);
    try {
      used.push_back({memory, bytes});
      // Room for all that may ever be kept, so that freeing takes no memory.
      kept.reserve(kMostKept + 1);
    } catch (const std::bad_alloc&) {
      if (!used.empty() && used.back().memory == memory) used.pop_back();
    }
  }

  // False for a block that is not known.
  bool Keep(void* memory) {
    const std::lock_guard guard(lock);
    FreeOld();
    const auto found = std::find_if(used.begin(), used.end(),
                                    [&](const Block& block) { return block.memory == memory; });
    if (found == used.end()) return false;
    Block block = *found;
    *found = used.back();
    used.pop_back();
    block.freed = Clock::now();
    kept.push_back(block);
    while (kept.size() > kMostKept || KeptBytes() > kMostKeptBytes) FreeFirst();
    return true;
  }

  void FreeAll() {
    const std::lock_guard guard(lock);
    while (!kept.empty()) FreeFirst();
  }

 private:
  void FreeFirst() {
    std::free(kept.front().memory);
    kept.erase(kept.begin());
  }
  void FreeOld() {
    const auto limit = Clock::now() - kKeptTime;
    while (!kept.empty() && kept.front().freed < limit) FreeFirst();
  }
  std::size_t KeptBytes() const {
    std::size_t sum = 0;
    for (const Block& block : kept) sum += block.bytes;
    return sum;
  }

  std::mutex lock;
  std::vector<Block> kept;  // the one that was freed first comes first
  std::vector<Block> used;
};

// Never destroyed: pictures of other static objects may outlive this file's.
KeptBlocks& Blocks() {
  static KeptBlocks& blocks = *new KeptBlocks;
  return blocks;
}

}  // namespace

void* AllocateLarge(std::size_t bytes) {
  const bool isKept = kKeepsBlocks && bytes >= kLargeFrom;
  if (isKept) {
    if (void* const kept = Blocks().Take(bytes)) return kept;
  }
  void* const block = std::malloc(bytes);
  if (!block) {
    FreeKeptBlocks();
    return std::malloc(bytes);
  }
  AnnounceWholeUse(block, bytes);
  if (isKept) Blocks().Note(block, bytes);
  return block;
}

void FreeLarge(void* block) {
  if (!block) return;
  if (!kKeepsBlocks || !Blocks().Keep(block)) std::free(block);
}

void FreeKeptBlocks() {
  if (kKeepsBlocks) Blocks().FreeAll();
}

}  // namespace platform
