// What the texts in a chain name outside of it: fonts and pictures.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "host/FilterList.h"
#include "host/Pipeline.h"

namespace host {

// Gives the chain with full paths: a picture that is named by a relative one is looked for from
// `folder`. A picture that is not there, or is none, is an error; a font that is not there is told
// to `warn`, in words for the user, with the one that is taken. Throws ChainError.
FXBOX_API ChainText WithFullPaths(const ChainText& chain, const std::vector<FilterEntry>& filters,
                                  const std::filesystem::path& folder,
                                  const std::function<void(const std::string&)>& warn = {});

}  // namespace host
