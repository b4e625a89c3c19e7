// A program that loads the trace log, for tests with real processes:
//   TraceWriter write FOLDER NAME COUNT    writes lines "NAME 0 ...", "NAME 1 ..." and stops
//   TraceWriter journal FOLDER NAME COUNT  the same through the journal thread
//   TraceWriter until FOLDER NAME 0        the same at once, until there is a file FOLDER/stop
//   TraceWriter die FOLDER NAME 0          dies in the middle of a line, holding the log's mutex
//   TraceWriter where FOLDER NAME 0        prints the log's file name without its folder
#include <cstdio>
#include <cstdlib>
#include <string>

#ifdef _WIN32
#include <windows.h>
#else
#include <signal.h>
#endif

#include "platform/PathText.h"
#include "platform/Services.h"
#include "settings/TraceLogStd.h"

namespace {

[[noreturn]] void Die() {
#ifdef _WIN32
  TerminateProcess(GetCurrentProcess(), 9);
#else
  raise(SIGKILL);
#endif
  std::abort();
}

// As a write that is cut short: the mutex is held and the line lacks its end.
void DieInTheMiddle() {
  const auto path = platform::PathFromText(TraceLog::GetLogFileName());
  const auto mutex = platform::CurrentServices().mutexes->Open("Trac_LogLockingMutex");
  const auto file = platform::CurrentServices().files->OpenGrowing(path, true);
  if (!mutex || !file) std::exit(3);
  if (mutex->WaitFor(std::chrono::seconds(1)) != platform::NamedMutex::Wait::Held) std::exit(4);
  file->Append("torn lin");
  Die();
}

// Long enough that a line which is written in pieces would show it.
template <class Condition>
void WriteLines(const char* name, Condition goesOn) {
  const std::string filling(300, '.');
  TraceLog log(4);
  for (int i = 0; goesOn(i); ++i) log.Format(4, "%s %d %s end", name, i, filling.c_str());
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 5) return 2;
  const std::string mode = argv[1];
  StartLogging(nullptr, true, mode == "journal", argv[2]);
  if (mode == "die") DieInTheMiddle();
  if (mode == "where") {
    std::puts(
        platform::PathText(platform::PathFromText(TraceLog::GetLogFileName()).filename()).c_str());
  }
  if (mode == "until") {
    const auto stop = platform::PathFromText(argv[2]) / "stop";
    WriteLines(argv[3], [&](int) { return !std::filesystem::exists(stop); });
  } else {
    WriteLines(argv[3], [count = std::atoi(argv[4])](int i) { return i < count; });
  }
  TraceLog::StopLogging(false);
  std::puts("done");  // whatever became of the log
  return 0;
}
