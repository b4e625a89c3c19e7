// Texts for the buffers of callers, which hold `size` characters, the closing zero among them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace settings {

// Whether there is room for a text at all; the other two ask for a buffer that has it.
inline bool IsBuffer(const char* buffer, int size) {
  return buffer && size > 0;
}

// Copies what fits; false when that is not all.
inline bool CopyTo(char* buffer, int size, std::string_view text) {
  const std::size_t copied = std::min(text.size(), static_cast<std::size_t>(size) - 1);
  buffer[text.copy(buffer, copied)] = '\0';
  return copied == text.size();
}

// Copies all or nothing.
inline bool CopyWhole(char* buffer, int size, std::string_view text) {
  return text.size() < static_cast<std::size_t>(size) && CopyTo(buffer, size, text);
}

}  // namespace settings
