// Percent-encoded texts: any bytes, written in letters that no list of items takes for its own.
#pragma once

#include <string>
#include <string_view>

#include "base/Export.h"

namespace base {

// Letters and digits of ASCII and "-_.~" stay as they are, every other byte becomes "%XX" with
// upper-case digits. The result holds no comma, blank, bracket, "=" or zero.
FXBOX_API std::string PercentEncode(std::string_view bytes);

// Undoes it, with digits of either case. A "%" without two digits behind it stands for itself, as
// does every character that needed no code.
FXBOX_API std::string PercentDecode(std::string_view text);

}  // namespace base
