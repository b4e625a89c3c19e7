// The filter classes at hand, with what is known of each.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "core/AnimChain.h"
#include "core/FilterClass.h"

namespace host {

struct FilterEntry {
  std::string progId;
  int order = 0;
  const FilterClass* row = nullptr;  // null for a class of another module
};

// What the creator lists, in its order.
FXBOX_API std::vector<FilterEntry> ListFilters(IAnimFilterCreator& creator);

// Null when there is no such class.
FXBOX_API const FilterEntry* FindFilter(const std::vector<FilterEntry>& filters,
                                        const std::string& progId);

// The parameter text of a new filter; empty when it gives none.
FXBOX_API std::string NewFilterText(IAnimFilterCreator& creator, const std::string& progId);
// The one that such a filter prints when it was given these parameters.
FXBOX_API std::string FilterTextBehind(IAnimFilterCreator& creator, const std::string& progId,
                                       const std::string& parameters);

// Whether its keys are known: the class is one of ours.
inline bool IsOwnClass(const FilterEntry& entry) {
  return entry.row != nullptr;
}

// One "Key=value" of a parameter text. White space around it is left out, within it is not.
struct ParameterItem {
  std::string_view whole;
  std::string_view key;    // whole again when there is no "="
  std::string_view value;  // data() is null when there is no "="
};

// Splits at the commas; a text of white space alone has no items.
FXBOX_API std::vector<ParameterItem> SplitParameters(std::string_view text);

// The entry of `words` that is most like a misspelt word, in the form `, did you mean "Sepia"?`;
// empty when none is.
FXBOX_API std::string Suggestion(std::string_view misspelt, const std::vector<std::string>& words);

}  // namespace host
