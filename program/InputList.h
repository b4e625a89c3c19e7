// Lists of inputs: one name after the other, from a file or as they come from standard input.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

namespace program {

class InputList {
 public:
  // What is between two names.
  enum class Separator { LineEnd, ZeroByte };

  // `file` in UTF-8, "-" for standard input. A FileError when it cannot be opened.
  InputList(const std::string& file, Separator between);

  // The next name in UTF-8, without blank ones; nothing at the end of the list, or when the user
  // interrupts the wait for it. Standard input is read as it comes: a name is there as soon as its
  // line is complete. A FileError when reading fails.
  std::optional<std::string> Next();

 private:
  bool Refill();
  std::optional<std::string> TakeLine();

  std::function<std::size_t(char* to, std::size_t count)> read;  // 0 at the end
  char separator;
  std::string unread;
  bool atEnd = false;
};

}  // namespace program
