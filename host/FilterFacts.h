// What is known of a filter class, gathered for a reader.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/FilterList.h"

namespace host {

// All texts in UTF-8.
struct KeyFacts {
  std::string key;
  std::string kind;  // "whole number", "number", "0 or 1", "hexadecimal", "text"
  std::optional<std::string> defaultValue;  // as a new filter prints it
  double least = 0;                         // the range that dialogs offer; a text has none
  double greatest = 0;
  std::string gloss;
  bool isNumbered = false;  // the key of the first of several things that the front key counts
};

struct FilterFacts {
  std::string progId;
  std::string className;  // empty for a class of another module, as are the next four
  std::string gloss;
  std::string icon;  // its name; empty where the class has none
  std::string note;  // why there are no keys; empty for a class of this module
  // How far a preview shows what the full picture will be: "exact", "scaled", "measured" or
  // "100 %"; empty where it is not known.
  std::string preview;
  std::optional<std::string> defaultText;
  std::string newText;  // what a new filter prints
  int order = 0;
  std::vector<KeyFacts> keys;
  std::string example;  // a chain text
};

FXBOX_API FilterFacts FactsOf(const FilterEntry& entry, IAnimFilterCreator& creator);

// The default text as apply takes it, each number that a dialog fills in at its first choice.
FXBOX_API std::optional<std::string> DefaultTextOf(const FilterEntry& entry);

// What the word for a preview's faithfulness means.
FXBOX_API std::string PreviewText(const std::string& preview);

// A text has none.
FXBOX_API bool HasRange(const KeyFacts& key);
// "0 to 100", empty without a range.
FXBOX_API std::string RangeText(const KeyFacts& key);

}  // namespace host
