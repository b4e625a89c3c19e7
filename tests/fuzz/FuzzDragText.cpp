// Any bytes as a text that holds a dragged chain; what is read is written and read again.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "core/DragText.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const auto read = core::ReadDragText({reinterpret_cast<const char*>(bytes), size});
  if (!read || read->chain.empty() || core::HoldsDragMarker("##" + read->chain + "##") ||
      core::HoldsDragMarker(read->second) || read->second.starts_with(core::kSecondTextMark) ||
      read->second.ends_with('\n')) {
    return 0;
  }
  const auto text = core::MakeDragText(read->chain, read->second);
  if (!text || core::ReadDragText(*text) != read) std::abort();
  return 0;
}
