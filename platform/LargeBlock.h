// Memory of whole pictures: large blocks, of which a few are kept for the next picture.
#pragma once

#include <cstddef>
#include <memory>

#include "base/Export.h"

namespace platform {

// A block with any contents; null without memory. Takes a kept one that is large enough and not
// much larger: what the system gives it clears and maps first, which takes longer than most work on
// it. Any thread.
FXBOX_API void* AllocateLarge(std::size_t bytes);

// For a block of AllocateLarge, or of malloc, or null. One of the first kind, of a megabyte or
// more, is kept for the next picture: ten seconds, sixty-four blocks and half a gigabyte at most,
// of which the first that was freed goes first. Those whose time is up go with the next call of
// either function, so that a host which does nothing more keeps the last ones until FreeKeptBlocks,
// which FxboxSetWorkers calls. Under a sanitizer none is kept. Any thread.
FXBOX_API void FreeLarge(void* block);

// Gives all kept blocks back to the system.
FXBOX_API void FreeKeptBlocks();

struct LargeDelete {
  void operator()(void* block) const { FreeLarge(block); }
};
// Numbers of such a block, which nobody has initialised.
template <class Number>
using LargeArray = std::unique_ptr<Number[], LargeDelete>;

// To be called for a fresh heap block that will be written throughout. The system may then map a
// large one in large pages, which takes a fraction of the time; the block is freed as any other.
// Without effect where the system takes no such advice.
void AnnounceWholeUse(void* block, std::size_t bytes);

}  // namespace platform
