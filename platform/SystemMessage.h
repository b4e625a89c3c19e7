// What the system says to a status code.
#pragma once

#include <wtypes.h>

#include <string>

#include "base/Export.h"

namespace platform {

// One or more lines in the system's code page, as the system ends them; a number where it has no
// words.
FXBOX_API std::string SystemMessage(HRESULT status);

}  // namespace platform
