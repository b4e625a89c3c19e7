#include "program/Messages.h"

#include <algorithm>
#include <iostream>

#include "base/CodePage.h"

namespace program {
namespace {

bool IsControl(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte < 32 || byte == 127;
}

}  // namespace

void PrintError(const std::string& message) {
  std::string line = message;
  std::replace_if(line.begin(), line.end(), IsControl, ' ');
  // The newline goes out with the text, so that lines of several programs do not mix.
  std::cerr << "fxbox: " + line + "\n" << std::flush;
}

std::filesystem::path PathOf(const std::string& utf8) {
  return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

std::string Utf8Of(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

std::string ChainTextOf(std::string_view outside) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (outside.substr(0, kByteOrderMark.size()) == kByteOrderMark) {
    outside.remove_prefix(kByteOrderMark.size());
  }
  std::string converted = base::FromUtf8(outside);
  return base::ToUtf8(converted) == outside ? converted : std::string(outside);
}

std::string ForShell(std::string help) {
  const bool takesSingle = std::filesystem::path::preferred_separator == '/';
  std::size_t start = 0;
  while (!takesSingle && start < help.size()) {
    const std::size_t end = std::min(help.find('\n', start), help.size());
    if (help.compare(start, 7, "  fxbox") == 0) {
      std::replace(help.begin() + static_cast<std::ptrdiff_t>(start),
                   help.begin() + static_cast<std::ptrdiff_t>(end), '\'', '"');
    }
    start = end + 1;
  }
  return help;
}

std::string Quoted(std::string_view codePageText) {
  constexpr std::size_t kLongest = 40;
  const bool isLong = codePageText.size() > kLongest;
  return '"' + base::ToUtf8(codePageText.substr(0, kLongest)) + (isLong ? "...\"" : "\"");
}

}  // namespace program
