#include "core/Diagnostics.h"

#include <atomic>
#include <cstdarg>

#include "base/KvString.h"
#include "platform/Services.h"
#include "settings/TraceLogStd.h"

namespace core {
namespace {

constexpr int kOwnLevel = 0;  // which -1 stands for

void WriteToDebugOutput(int, const char* line) {
  platform::CurrentServices().desktop->WriteDebugOutput(line);
}

std::atomic<LogSink> logSink{WriteToDebugOutput};

void GiveTo(LogSink sink, int level, const char* format, va_list arguments) {
  KvString line;
  line.FormatV(format, arguments);
  sink(level, line);
}

}  // namespace

void SetLogSink(LogSink sink) {
  logSink = sink ? sink : WriteToDebugOutput;
}

void WriteToTraceLog(int level, const char* line) {
  TraceLog(kOwnLevel).Write(level, line, true);
}

void LogLine(int level, const char* format, ...) {
  const LogSink sink = logSink;
  va_list arguments;
  va_start(arguments, format);
  if (sink == WriteToTraceLog) {
    TraceLog(kOwnLevel).FormatV(level, format, arguments);  // which asks before it formats
  } else {
    GiveTo(sink, level, format, arguments);
  }
  va_end(arguments);
}

void ShowLines(const std::string& lines, const std::string& caption) {
  platform::CurrentServices().desktop->ShowMessage(lines, caption);
}

}  // namespace core
