// The forms in which sizes and rectangles stand on the command line.
#pragma once

#include <string>

#include "program/Host.h"

namespace program {

// "640x480". `option` is named in the message of the UsageError for anything else.
Size ParseSize(const std::string& text, const std::string& option);
// The same, or "640" for a square.
Size ParseBox(const std::string& text, const std::string& option);
// "X,Y,WIDTH,HEIGHT"; the corner may lie outside the picture, the sides are at least 1.
Rectangle ParseRectangle(const std::string& text, const std::string& option);

}  // namespace program
