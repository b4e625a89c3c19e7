#include "settings/TraceLogStd.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <deque>
#include <fstream>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>

#include "platform/PathText.h"
#include "platform/Services.h"
#include "settings/Journal.h"
#include "settings/LogLines.h"
#include "settings/LogPlace.h"
#include "settings/LogTurn.h"

namespace {

using settings::kLineEnd;
using settings::LogTurn;

constexpr int kUsualLevel = 5;
constexpr int kFlushedBelow = 4;
constexpr std::size_t kLongestFormatted = 8191;
constexpr std::size_t kLastEntryLength = 4048;  // one less with a prefix
constexpr std::size_t kMostKept = 5000;
constexpr char kStartBanner[] =
    "************************************B*A*C*K*T*R*A*C*E***S*T*A*R*T*S***H*E*R*E*****************"
    "*"
    "******************";
constexpr char kEndBanner[] =
    "**************************************B*A*C*K*T*R*A*C*E***E*N*D*S***H*E*R*E*******************"
    "*"
    "******************";
constexpr char kRuler[] = "---------------------------------------------------------------";
constexpr char kFault[] = "ERROR on writing to LogFile";

const platform::Services& System() {
  return platform::CurrentServices();
}

std::string PathOfModule(const void* module) {
  std::filesystem::path path;
  if (module) path = System().files->ModuleOf(module);
  return platform::PathText(path.empty() ? System().process->Program() : path);
}

// The log of the process. All but the atomic members are used with `gate` held.
class LogState {
 public:
  // Lines that nobody will read are told apart without the gate: the first two from the outside.
  std::atomic<int> logLevel{kUsualLevel};
  std::atomic<bool> mute{false};    // silent after a failed opening, or stopped
  std::atomic<bool> direct{false};  // the file is open
  TraceBacktrace backtrace;
  std::timed_mutex gate;

  bool IsWritten(int level) const {
    if (mute.load(std::memory_order_relaxed)) return false;
    return !direct.load(std::memory_order_relaxed) || backtrace.enabled || backtrace.pending ||
           level < logLevel.load(std::memory_order_relaxed);
  }

  void Start(const void* starting, bool writeStartLines, bool useJournal, const char* folderGiven);
  void Write(int level, int objectLevel, std::string_view text, bool prefix);
  // False when the file cannot be opened and that is to be shown.
  bool Flush();
  void Dump();
  void Forget();
  void Stop(bool deleteFile);
  void EndJournal();

  bool HasJournal() const { return journal != nullptr; }
  const std::string& Path() const { return path; }
  std::shared_ptr<platform::NamedMutex> Turns() const { return turns; }

  // Guards lastEntry alone, which is asked for while lines are written.
  std::mutex lastLock;
  std::string lastEntry;

 private:
  // Gives false when the program keeps no log.
  bool FindPlace(const char* folderGiven);
  void Open();
  void WriteInTurn(int level, std::string_view text, bool prefix);
  void WriteLine(int level, const std::string& front, std::string_view text);
  void WriteKept();
  void KeepForBacktrace(std::string line);
  void GiveJournalUp();

  const void* module = nullptr;
  std::string stem;
  std::string folder;
  std::string path;
  bool quiet = false;
  bool journalMode = false;
  bool justOpened = false;  // and nothing was written yet
  std::unique_ptr<platform::GrowingFile> file;
  std::shared_ptr<platform::NamedMutex> turns;
  std::shared_ptr<settings::Journal> journal;
  std::deque<std::string> kept;
};

// Never destroyed: lines may come until the very end of the process.
LogState& State() {
  static LogState& state = *new LogState;
  return state;
}

// Runs `body` with the gate held, unless that takes too long. Faults end here.
template <class Body>
void WithState(Body body, const char* fault = kFault,
               std::chrono::milliseconds limit = settings::kLongestWait) noexcept {
  try {
    LogState& state = State();
    const std::unique_lock gate(state.gate, std::chrono::system_clock::now() + limit);
    if (gate) body(state);
  } catch (...) {
    try {
      System().desktop->WriteDebugOutput(fault);
    } catch (...) {
    }
  }
}

bool LogState::FindPlace(const char* folderGiven) {
  stem = settings::StemOf(System().process->Program());
  for (const char* without : {"zngu", "regs", "znun"}) {
    if (settings::SameStem(stem, without)) return false;
  }
  quiet = true;
  folder = folderGiven && *folderGiven ? folderGiven : settings::FindLogFolder(folder);
  if (settings::SameStem(stem, "anir") || settings::SameStem(stem, "anis")) {
    folder = platform::PathText(System().process->TemporaryFolder());
    stem = settings::StemOf(platform::PathFromText(PathOfModule(module)));
    return settings::SameStem(stem, "ZNSE");
  }
  return true;
}

void LogState::Open() {
  file = System().files->OpenGrowing(platform::PathFromText(path), true);
  direct = file != nullptr;
  justOpened = true;
}

void LogState::Start(const void* starting, bool writeStartLines, bool useJournal,
                     const char* folderGiven) {
  logLevel = kUsualLevel;
  module = starting;
  mute = !FindPlace(folderGiven);
  if (mute) return;
  const platform::LocalTime today = System().process->Now();
  settings::RemoveOldLogs(folder, today);
  path = settings::LogFileName(folder, stem, today);
  std::error_code ignored;
  std::filesystem::create_directories(platform::PathFromText(path).parent_path(), ignored);
  turns = System().mutexes->Open(stem + "_LogLockingMutex");
  if (useJournal) journalMode = true;
  if (!journalMode) {
    Open();
    mute = !file;
  } else if (!journal && turns) {
    file.reset();
    direct = false;
    journal = settings::Journal::Start(path, turns);
  }
  if (turns && writeStartLines) {
    Write(0, 0, "Starting Program/DLL \"" + PathOfModule(module) + '"', true);
  }
}

void LogState::Write(int level, int objectLevel, std::string_view text, bool prefix) {
  if (mute) return;
  if (journal) {
    if (!journal->Put(settings::JournalPrefix(level).append(text))) GiveJournalUp();
    return;
  }
  if (!file) Start(nullptr, true, false, "");
  if (!file || !turns) return;
  const LogTurn turn(*turns, *file, justOpened);
  if (turn.Result() != LogTurn::Wait::Held) return;
  justOpened = false;
  WriteInTurn(level == -1 ? objectLevel : level, text, prefix);
}

void LogState::WriteInTurn(int level, std::string_view text, bool prefix) {
  const std::string front = prefix ? settings::DirectPrefix() : std::string();
  if (backtrace.enabled && prefix && !backtrace.pending) {
    KeepForBacktrace(std::string(front).append(text));
  }
  if (backtrace.enabled && prefix && backtrace.pending && !kept.empty()) {
    WriteKept();
    if (backtrace.announceFullTrace) {
      std::array<char, 160> told;
      std::snprintf(told.data(), told.size(),
                    "You switched to full trace level.\nThe last %d lines have been dumped.\n"
                    "From now on, a full log is performed.",
                    static_cast<int>(kMostKept));
      System().desktop->WriteDebugOutput(told.data());
    } else {
      backtrace.pending = false;
    }
  }
  if (backtrace.pending || level < logLevel) WriteLine(level, front, text);
}

void LogState::WriteLine(int level, const std::string& front, std::string_view text) {
  std::string line = std::string(front).append(text);
  {
    const std::lock_guard guard(lastLock);
    lastEntry = line.substr(0, front.empty() ? kLastEntryLength : kLastEntryLength - 1);
  }
  line.append(kLineEnd);
  System().desktop->WriteDebugOutput(line);
  // In one piece, so that a process that is killed leaves whole lines behind.
  file->Append(line);
  if (level < kFlushedBelow) file->Flush();
}

void LogState::KeepForBacktrace(std::string line) {
  kept.push_back(std::move(line));
  while (kept.size() > kMostKept) kept.pop_front();
}

// What was written is not kept any longer.
void LogState::WriteKept() {
  WriteInTurn(0, kStartBanner, false);
  std::string lines;
  for (const std::string& line : kept) lines.append(line).append(kLineEnd);
  file->Append(lines);
  kept.clear();
  WriteInTurn(0, kEndBanner, false);
}

void LogState::EndJournal() {
  if (journal) journal->End();
  journal.reset();
  journalMode = false;
}

// Its thread could not open the file and has ended.
void LogState::GiveJournalUp() {
  journal.reset();
  journalMode = false;
  mute = true;
}

bool LogState::Flush() {
  if (mute) return true;
  EndJournal();
  Open();
  if (file) file->Flush();
  return file || quiet;
}

void LogState::Dump() {
  EndJournal();
  if (!file && !path.empty()) Open();
  if (!file || !turns) return;
  const LogTurn turn(*turns, *file, justOpened);
  if (turn.Result() == LogTurn::Wait::TimedOut || turn.Result() == LogTurn::Wait::Failed) return;
  justOpened = false;
  WriteKept();
  file->Flush();
}

void LogState::Forget() {
  kept.clear();
  folder.clear();
}

void LogState::Stop(bool deleteFile) {
  const std::string last =
      "Program/DLL \"" + PathOfModule(module) + "\" terminated correctly\r\n\r\n";
  file.reset();
  direct = false;
  if (deleteFile) {
    std::error_code ignored;
    std::filesystem::remove(platform::PathFromText(path), ignored);
  }
  Write(0, 0, last, true);
  file.reset();
  direct = false;
  EndJournal();
  turns.reset();
  Forget();
  mute = true;
}

// A copy that belongs to the calling thread.
const char* ThreadsCopy(char (&copy)[kLastEntryLength + 1], std::string_view text) {
  copy[text.copy(copy, kLastEntryLength)] = '\0';
  return copy;
}

// Copies what the source holds by now in blocks, so that a log can be appended even to itself.
void CopyInto(platform::GrowingFile& log, std::ifstream& source, std::uintmax_t size) {
  std::array<char, 4096> block;
  for (std::uintmax_t left = size; left > 0;) {
    source.read(block.data(),
                static_cast<std::streamsize>(std::min<std::uintmax_t>(left, block.size())));
    const auto count = static_cast<std::size_t>(source.gcount());
    if (count == 0 || !log.Append({block.data(), count})) return;
    left -= count;
  }
}

// With no thread of this process waiting meanwhile: the file may be long.
bool AppendInTurn(const std::string& logPath, platform::NamedMutex& turns, const char* path) {
  const auto log = System().files->OpenGrowing(platform::PathFromText(logPath), true);
  if (!log) return false;
  const LogTurn turn(turns, *log, false);
  if (turn.Result() != LogTurn::Wait::Held && turn.Result() != LogTurn::Wait::Abandoned) {
    return false;
  }
  const std::filesystem::path from = platform::PathFromText(path);
  std::ifstream source(from, std::ios::binary);
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(from, error);
  if (!source || error) return false;
  CopyInto(*log, source, size);
  return true;
}

}  // namespace

void TraceLog::FormatV(int lineLevel, const char* format, va_list arguments) {
  if (!State().IsWritten(lineLevel == -1 ? level : lineLevel)) return;
  try {
    std::string text;
    if (settings::FormatLimited(kLongestFormatted, "xxx Buffer Overflow xxx", format, arguments,
                                text)) {
      Write(lineLevel, text.c_str(), true);
    } else {
      scratch = "Error in formatting Parameters for Log!!!!: ";
      scratch += format;
      Write(lineLevel, scratch, true);
    }
  } catch (...) {
    // Without memory there is no line.
  }
}

void TraceLog::Format(int lineLevel, const char* format, ...) {
  if (!this) return;  // the compiler is told to keep this question: see CMakeLists.txt
  va_list arguments;
  va_start(arguments, format);
  FormatV(lineLevel, format, arguments);
  va_end(arguments);
}

void TraceLog::Write(int lineLevel, const char* text, bool prefix) {
  if (!State().IsWritten(lineLevel == -1 ? level : lineLevel)) return;
  WithState([&](LogState& state) { state.Write(lineLevel, level, text ? text : "", prefix); });
}

void TraceLog::SetLogLevel(int logLevel) {
  State().logLevel = logLevel;
}

const char* TraceLog::GetLastLogEntry() {
  static thread_local char copy[kLastEntryLength + 1];
  const std::lock_guard guard(State().lastLock);
  return ThreadsCopy(copy, State().lastEntry);
}

const char* TraceLog::GetLogFileName() {
  static thread_local char copy[kLastEntryLength + 1];
  copy[0] = '\0';
  WithState([](LogState& state) { ThreadsCopy(copy, state.Path()); });
  return copy;
}

void TraceLog::FlushBuffers() {
  std::optional<std::string> failed;
  WithState([&failed](LogState& state) {
    if (!state.Flush()) failed = state.Path();
  });
  if (!failed) return;
  System().desktop->ShowMessage(
      "Error creating or opening the log file " + *failed + "\nLogging is disabled", "Log Error");
}

void TraceLog::DumpStack() {
  WithState([](LogState& state) { state.Dump(); }, "unable to Dump Stack");
}

bool TraceLog::AppendFileToLog(const char* path) {
  if (!path) return false;
  Write(0, kRuler, true);
  Format(0, "Appending File %s", path);
  Write(0, kRuler, true);
  Write(0, kRuler, true);
  std::string logPath;
  std::shared_ptr<platform::NamedMutex> turns;
  bool done = false;
  WithState([&](LogState& state) {
    logPath = state.Path();
    turns = state.Turns();
  });
  try {
    done = turns && AppendInTurn(logPath, *turns, path);
  } catch (...) {
    System().desktop->WriteDebugOutput(kFault);
  }
  if (!done) return false;
  Write(0, kRuler, true);
  Write(0, kRuler, true);
  return true;
}

void TraceLog::ClearMemory() {
  WithState([](LogState& state) { state.Forget(); });
}

void TraceLog::StopLogging(bool deleteFile) {
  WithState([deleteFile](LogState& state) { state.Stop(deleteFile); });
}

void StartLogging(HMODULE module, bool writeStartLines, bool useJournal, const char* folder) {
  WithState([&](LogState& state) { state.Start(module, writeStartLines, useJournal, folder); });
}

void StopLoggingAtProcessEnd() {
  WithState(
      [](LogState& state) {
        if (!state.HasJournal()) state.Stop(false);
      },
      kFault, std::chrono::milliseconds(0));
}

TraceBacktrace& GetTraceBacktrace() {
  return State().backtrace;
}
