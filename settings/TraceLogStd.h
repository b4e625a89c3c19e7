// The trace log: a dated text file for each program that loads the library.
#pragma once

#include <wtypes.h>

#include <atomic>
#include <cstdarg>
#include <cstdint>
#include <string>

#include "base/KvString.h"

// A light handle on the one log of the process. Lines whose level is below the log's own (5 until
// it is set) are written; a line of level 0 to 3 is also brought to the disk before the call
// returns.
//
// The log opens itself on the first line. Several processes may write to one file; they take turns
// by a named mutex, for which a line waits at most ten seconds and is lost then. When the file
// cannot be opened the log falls silent. Nothing is thrown. Any thread may write at any time; a
// handle of its own for each thread.
class FXBOX_API TraceLog {
 public:
  explicit TraceLog(int objectLevel) : level(objectLevel) {}
  virtual ~TraceLog() = default;

  // A line from a printf format, of at most 8,191 characters: a longer one begins with
  // "xxx Buffer Overflow xxx ". A null object is ignored.
  void Format(int lineLevel, const char* format, ...) KV_PRINTF(3, 4);
  void FormatV(int lineLevel, const char* format, va_list arguments) KV_PRINTF(3, 0);
  // A line of any length; level -1 stands for the object's. With `prefix`, time, process and thread
  // stand in front.
  void Write(int lineLevel, const char* text, bool prefix);
  void Write(const char* text, bool prefix) { Write(-1, text, prefix); }
  void LogFuncsAt(int objectLevel) { level = objectLevel; }

  static void SetLogLevel(int logLevel);
  // The last line that was written at once, at most 4,048 characters; for this thread, until it
  // asks again.
  static const char* GetLastLogEntry();
  // The file's full name, empty before the start; for this thread, until it asks again.
  static const char* GetLogFileName();

  // Ends the journal thread, after it has written what waits, and brings the file to the disk. From
  // then on lines are written at once.
  void FlushBuffers();
  // Writes the lines kept for a backtrace, between two banners.
  void DumpStack();
  // Copies a text file into the log; false when one of the two cannot be opened.
  bool AppendFileToLog(const char* path);
  // Forgets the lines kept for a backtrace and the log's folder.
  void ClearMemory();

  // Closes the log, or deletes it, and writes a last line: since the file is closed by then, the
  // log starts once more for it. Afterwards nothing is written until StartLogging.
  static void StopLogging(bool deleteFile);

 private:
  KvString scratch;
  std::int32_t level;
};

// Starts the log at level 5. `module` is the one that starts it, null for the program (on Linux any
// address in it). Without a folder the settings name one: "Path#" and "Path%d" in "Datapaths",
// "Log" in "Locations", or "IniFilePath" in the registry; then the folder of an earlier start, then
// one of the user's own. Logs older than a month are deleted there. With `useJournal` lines go
// through a thread of the log's own. The programs "zngu", "regs" and "znun" keep no log.
FXBOX_API void StartLogging(HMODULE module, bool writeStartLines, bool useJournal,
                            const char* folder);

// For the end of the process, when other threads may have been stopped wherever they were: as
// StopLogging, but it waits for nobody in this process, and leaves a journal as it is.
FXBOX_API void StopLoggingAtProcessEnd();

// Nothing here turns the backtrace on: these switches are for a host that wants it. While it is
// enabled the last 5,000 lines of any level are kept. A pending one is written with the next line;
// with `announceFullTrace` it then stays pending, and everything is written.
struct TraceBacktrace {
  std::atomic<bool> enabled{false};
  std::atomic<bool> pending{false};
  std::atomic<bool> announceFullTrace{true};
};
FXBOX_API TraceBacktrace& GetTraceBacktrace();
