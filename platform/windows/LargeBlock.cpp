#include "platform/LargeBlock.h"

namespace platform {

// Large pages are a privilege here.
void AnnounceWholeUse(void*, std::size_t) {}

}  // namespace platform
