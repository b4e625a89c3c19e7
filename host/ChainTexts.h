// The texts in a chain: what a user has to say, and the fonts and pictures that they name.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "host/FilterList.h"
#include "host/Pipeline.h"

namespace host {

// Gives the chain with these texts, UTF-8: each becomes the Text of the next filter that writes
// one, in the place of what is there. A watermark whose picture stands in the text's place is
// passed over. Throws a ChainError when there are more texts than such filters.
FXBOX_API ChainText WithTexts(const ChainText& chain, const std::vector<FilterEntry>& filters,
                              const std::vector<std::string>& texts);

// Gives the chain with full paths: a picture that is named by a relative one is looked for from
// `folder`. A picture that is not there, or is none, is an error; a font that is not there is told
// to `warn`, in words for the user, with the one that is taken. Throws ChainError.
FXBOX_API ChainText WithFullPaths(const ChainText& chain, const std::vector<FilterEntry>& filters,
                                  const std::filesystem::path& folder,
                                  const std::function<void(const std::string&)>& warn = {});

}  // namespace host
