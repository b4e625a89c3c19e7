// The text form of a chain, taken apart.
#pragma once

#include <string>
#include <vector>

#include "base/Export.h"

struct ChainTextItem {
  std::string name;
  std::string parameters;
};

// Splits a chain text by its two markers. Two layouts are told apart by the number of `open`
// markers ahead of the first `close`: one is `name open parameters close`, two or more is `open
// name open parameters close`. The first item that lacks a marker ends the list. No escaping
// exists. Null and empty arguments give no items.
FXBOX_API std::vector<ChainTextItem> SplitChainText(const char* text, const char* open,
                                                    const char* close);
