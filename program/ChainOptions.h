// How a chain text comes in from the command line; shared by all commands that take one.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "program/Command.h"
#include "program/Host.h"

namespace program {

struct ChainOptions {
  std::optional<std::string> chain;  // UTF-8
  std::optional<std::string> file;
  std::string open = "(";
  std::string close = ")";
  bool lenient = false;
  std::vector<std::string> texts;  // UTF-8, for the filters that write texts
};

void AddChainOptions(const Command& command, ChainOptions& options);

// The chain text for the library, checked unless the options are lenient, with the texts in it; a
// text without a chain is one in the middle of the picture. A UsageError when there is neither,
// when there are two, when the file cannot be read or the check fails.
ChainText TakeChain(const ChainOptions& options, IAnimFilterCreator& creator);

}  // namespace program
