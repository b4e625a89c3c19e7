// Stand-in for the system header of the same name: numbers of clipboard formats.
#pragma once

#include <wtypes.h>

#include "base/Export.h"

inline constexpr UINT CF_TEXT = 1;
inline constexpr UINT CF_UNICODETEXT = 13;

extern "C" {

// The number of a format by its name, which compares without case: 0xC000 to 0xFFFF, the same for
// one name as long as the process lives. 0 for an empty name, or when there are no more.
FXBOX_API UINT RegisterClipboardFormatA(const char* name);
// The length of the name, cut to the buffer with its terminator; 0 for a number that was not given.
FXBOX_API int GetClipboardFormatNameA(UINT format, char* buffer, int size);
}
