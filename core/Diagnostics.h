// Lines that the core writes for whoever reads the trace log.
#pragma once

#include <string>

#include "base/Export.h"

namespace core {

// Takes a finished line and its level; -1 is always of interest, 5 and above hardly ever.
using LogSink = void (*)(int level, const char* line);

// Where lines go: to the debugger output, until the module has started the trace log; null is the
// debugger output again.
FXBOX_API void SetLogSink(LogSink sink);

// The trace log as a sink. Lines of a level that it does not want cost next to nothing.
void WriteToTraceLog(int level, const char* line);

#if defined(__GNUC__)
__attribute__((format(printf, 2, 3)))
#endif
void LogLine(int level, const char* format, ...);

// Shows lines of text to the person at the screen and waits until they are dismissed.
void ShowLines(const std::string& lines, const std::string& caption);

}  // namespace core
