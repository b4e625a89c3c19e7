// Documents that are made from the class table: the filter reference and the glossary.
#pragma once

#include <string>

#include "program/Host.h"

namespace program {

// docs/filters.md and docs/glossary.md, of this library's own classes.
std::string FilterReference(IAnimFilterCreator& creator);
std::string Glossary(IAnimFilterCreator& creator);
// A line for each sample picture of the reference: its name and the chain that makes it.
std::string Examples(IAnimFilterCreator& creator);

}  // namespace program
