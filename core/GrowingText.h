// Texts from getters that write only what fits.
#pragma once

#include <unknwn.h>

#include <memory>
#include <string>

namespace core {

// Asks get(buffer, size), which gives a status code, with larger and larger buffers until it writes
// a text. A failure and an empty text count as no answer: who has a longer one writes one of both.
// Empty when there is none within 16 MiB.
template <class Get>
std::string GrowingText(Get get, int firstSize = 4096) {
  constexpr int kLargest = 16 << 20;
  constexpr int kGrowth = 16;
  for (int size = firstSize;; size = size < kLargest / kGrowth ? size * kGrowth : kLargest) {
    // Not cleared: most of a large one is never touched.
    const std::unique_ptr<char[]> buffer(new char[static_cast<std::size_t>(size)]);
    buffer[0] = 0;
    const HRESULT status = get(buffer.get(), size);
    if (SUCCEEDED(status) && buffer[0]) return buffer.get();
    if (size == kLargest) return {};
  }
}

}  // namespace core
