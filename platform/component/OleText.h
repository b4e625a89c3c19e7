// Texts of the component runtime: wide there, in the system's code page here.
#pragma once

#include <objbase.h>

#include <string>
#include <string_view>

#include "base/CodePage.h"

namespace platform {

// Empty for null. A character that the code page lacks becomes "?".
inline std::string FromOleText(const OLECHAR* text) {
  return text ? base::FromWide(reinterpret_cast<const char16_t*>(text)) : std::string();
}

// The same, and frees the text, which the runtime has given out.
inline std::string TakeOleText(OLECHAR* text) {
  std::string result = FromOleText(text);
  CoTaskMemFree(text);
  return result;
}

// What the runtime can be given, zero-terminated by c_str().
inline std::basic_string<OLECHAR> ToOleText(std::string_view text) {
  const std::u16string wide = base::ToWide(text);
  return {wide.begin(), wide.end()};
}

}  // namespace platform
