#include "core/Diagnostics.h"

#include <atomic>
#include <cstdarg>

#include "base/KvString.h"
#include "platform/Services.h"

namespace core {
namespace {
std::atomic<LogSink> logSink{nullptr};
}

void SetLogSink(LogSink sink) {
  logSink = sink;
}

void LogLine(int level, const char* format, ...) {
  KvString line;
  va_list arguments;
  va_start(arguments, format);
  line.FormatV(format, arguments);
  va_end(arguments);
  if (const LogSink sink = logSink) {
    sink(level, line);
  } else {
    platform::CurrentServices().desktop->WriteDebugOutput(static_cast<const char*>(line));
  }
}

void ShowLines(const std::string& lines, const std::string& caption) {
  platform::CurrentServices().desktop->ShowMessage(lines, caption);
}

}  // namespace core
