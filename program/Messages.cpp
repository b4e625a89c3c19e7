#include "program/Messages.h"

#include <algorithm>
#include <filesystem>
#include <iostream>

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

}  // namespace program
