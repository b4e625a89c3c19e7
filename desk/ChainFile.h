// How a chain is kept beside its picture: as a text file, or in the box that the picture lies in.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "desk/ChainDocument.h"

namespace desk {

// An item a line, UTF-8. Those that are switched off stand behind "//off ", which every reader of
// chain files passes over.
std::string ChainFileText(const ChainItems& items);

// The items of such a text. `check` gives the items of a chain text that it finds good, and throws
// for any other; what is switched off and no good is left out.
ChainItems ItemsOfChainFile(const std::string& text,
                            const std::function<ChainItems(const std::string&)>& check);

// --- in boxes: a picture is "BOX::NAME". Failures are program::FileErrors.

bool IsInBox(const std::string& picture);
// Nothing where the box keeps no chain for the picture.
std::optional<std::string> ReadBoxChain(const std::string& picture);
// All of it or nothing. The picture and everything else in the box stay as they are.
void WriteBoxChain(const std::string& picture, const std::string& text);

}  // namespace desk
