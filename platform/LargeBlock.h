// Memory of whole pictures.
#pragma once

#include <cstddef>

namespace platform {

// To be called for a fresh heap block that will be written throughout. The system may then map a
// large one in large pages, which takes a fraction of the time; the block is freed as any other.
// Without effect where the system takes no such advice.
void AnnounceWholeUse(void* block, std::size_t bytes);

}  // namespace platform
