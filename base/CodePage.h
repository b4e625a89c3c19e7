// Windows-1252, the code page of all narrow texts: conversions to wide text, UTF-8 and OEM 850, and
// case.
#pragma once

#include "base/Export.h"

#include <string>
#include <string_view>

namespace base {

// Every byte has a wide character: the five bytes that the code page leaves undefined (81 8D 8F 90
// 9D) stand for the control characters of the same number, so any text comes back from ToWide
// unchanged. All functions take embedded zeros, need no lock and throw only std::bad_alloc.

// One UTF-16 unit for each byte.
FXBOX_API std::u16string ToWide(std::string_view text);

// One byte for each UTF-16 unit; what the code page does not hold becomes '?' (a surrogate pair
// gives two).
FXBOX_API std::string FromWide(std::u16string_view text);

FXBOX_API std::string ToUtf8(std::string_view text);

// One byte for each character. A character that the code page does not hold becomes '?', and so
// does each byte that belongs to no well-formed character.
FXBOX_API std::string FromUtf8(std::string_view utf8);

// Between Windows-1252 and the OEM code page 850. Letters, signs and control characters below 128
// stay as they are; a character that the other page does not hold becomes the one that looks most
// like it (a long dash becomes '-', a box corner '+'), or '?' where none does.
FXBOX_API char ToOem(char c);
FXBOX_API char FromOem(char c);

// Case of the letters of Windows-1252, whatever the process's locale is. A letter whose other case
// is not in the code page (sharp s, micro sign) stays as it is.
FXBOX_API char ToLower(char c);
FXBOX_API char ToUpper(char c);

}  // namespace base
