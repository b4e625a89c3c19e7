// A second, selective channel beside the trace log, for topics that a developer asks for.
#pragma once

#include "base/KvString.h"

// Shows a printf text of at most 4,095 characters at the debugger output, and as a line of level 0
// in the log, when the topic is among the words of the file ZNDebug.txt, which lies beside the
// program or else in the current folder and is read at the first call. Words are set apart by
// blanks; one that begins with '#' makes the rest of its line a comment. At most 499 words count,
// case included. Gives 0. Any thread; nothing is thrown.
FXBOX_API int ZNDebugMonitor(const char* topic, const char* format, ...) KV_PRINTF(2, 3);

// The end, for when the module goes: a later call reads the file for itself alone.
FXBOX_API void EndDebugMonitor();
