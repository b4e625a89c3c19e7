// The strict reading of a chain text: the library skips what it does not know, a person wants to be
// told.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "host/FilterList.h"
#include "host/Pipeline.h"

namespace host {

// Where a chain text is wrong. All count from 1; 0 where it is not known.
struct ChainPlace {
  int item = 0;
  int line = 0;
  int character = 0;   // of the line, in bytes
  std::string filter;  // of the item, UTF-8; empty where it is not known
};

// Names the item and the place: `chain item 2 (ZNFilter.Sepia.1): unknown key "Sepai" at character
// 31`.
class FXBOX_API ChainError : public std::runtime_error {
 public:
  explicit ChainError(const std::string& what, const ChainPlace& where = {})
      : std::runtime_error(what), place(where) {}
  const ChainPlace& Place() const { return place; }

 private:
  ChainPlace place;
};

// The text of a chain file without the lines that begin with "//": remarks, and what a host keeps
// of a chain beside it. They become empty lines, so that places stay right.
FXBOX_API std::string WithoutRemarks(const std::string& text);

// Takes both layouts, "name(parameters)" and "(name(parameters)", with white space between the
// items and around the parameters' commas, of which one more may stand at the end. Every filter has
// to be one of `filters` and do its work, and every parameter a known key with a number of its kind
// that the filter keeps as it is; a number out of a dialog's range alone is none of the errors. Of
// another module's classes any parameters are good, and of any class the text that it prints. An
// empty text is an empty chain.
//
// Returns the text as the library takes it: without the white space between the items. Throws
// ChainError.
FXBOX_API std::string CheckChainText(const ChainText& chain,
                                     const std::vector<FilterEntry>& filters,
                                     IAnimFilterCreator& creator);

}  // namespace host
