// What the texts in a chain name outside of it: fonts and pictures.
#pragma once

#include <filesystem>

#include "program/FilterList.h"
#include "program/Pipeline.h"

namespace program {

// Gives the chain with full paths: a picture that is named by a relative one is looked for from
// `folder`. A picture that is not there, or is none, is an error; a font that is not there is told
// on standard error, with the one that is taken. Throws ChainError.
ChainText WithFullPaths(const ChainText& chain, const std::vector<FilterEntry>& filters,
                        const std::filesystem::path& folder);

}  // namespace program
