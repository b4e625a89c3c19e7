// Texts as GTK takes them.
#pragma once

#include <string>

namespace toolkit {

// "&Open" as "_Open": the mnemonic in GTK's way. An underscore is doubled.
inline std::string WithGtkMnemonic(const std::string& text) {
  std::string converted;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '_') {
      converted += "__";
    } else if (text[i] != '&') {
      converted += text[i];
    } else if (i + 1 < text.size() && text[i + 1] == '&') {
      converted += '&';
      ++i;
    } else {
      converted += '_';
    }
  }
  return converted;
}

}  // namespace toolkit
