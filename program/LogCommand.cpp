// fxbox log: where the trace log is, and its last lines.
#include <algorithm>
#include <fstream>
#include <iostream>
#include <memory>
#include <thread>

#include "base/CodePage.h"
#include "platform/PathText.h"
#include "program/Commands.h"
#include "program/Interrupt.h"
#include "program/Messages.h"
#include "settings/TraceLogStd.h"

namespace program {
namespace {

namespace fs = std::filesystem;

struct LogOptions {
  bool path = false;
  bool follow = false;
  int lines = 20;
  std::string program;
};

constexpr char kExamples[] = R"(Examples:
  fxbox log
  fxbox log --lines 100 --follow
  fxbox log --path
  fxbox log --program photos.exe     the log that another program writes in the same folder)";

// The newest log of the program whose log this one is: the dates in their names sort.
fs::path NewestLike(const fs::path& log) {
  const std::string name = platform::PathText(log.filename());
  const std::string front = name.substr(0, name.find('(') + 1);
  fs::path newest = log;
  std::error_code error;
  fs::directory_iterator entry(log.parent_path(), error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    const std::string other = platform::PathText(entry->path().filename());
    const bool alike =
        other.size() == name.size() && other.starts_with(front) && other.ends_with(").log");
    if (alike && other > platform::PathText(newest.filename())) newest = entry->path();
  }
  return newest;
}

fs::path LogOf(const std::string& program) {
  const fs::path own = platform::PathFromText(TraceLog::GetLogFileName());
  if (own.empty()) throw std::runtime_error("this program keeps no log");
  if (program.empty()) return own;
  constexpr std::size_t kStemLength = 4;
  const std::string stem = platform::PathText(PathOf(program).stem()).substr(0, kStemLength);
  const fs::path least = own.parent_path() / platform::PathFromText(stem + "(0000-00-00).log");
  const fs::path newest = NewestLike(least);
  if (newest == least) throw FileError(program, "it has no log in " + Utf8Of(own.parent_path()));
  return newest;
}

// Prints a log as it grows. Its texts are in the code page of the library.
class Reader {
 public:
  explicit Reader(fs::path log) : file(std::move(log)) {}

  const fs::path& File() const { return file; }

  // From here on only the last lines are left to be printed.
  void GoToLastLines(int lines) {
    std::ifstream in(file, std::ios::binary);
    if (!in) throw FileError(Utf8Of(file), "the log cannot be read");
    const std::uintmax_t size = Size();
    for (std::uintmax_t back = 4096;; back *= 2) {
      const std::uintmax_t from = size - std::min(size, back);
      const std::string text = Bytes(in, from, size);
      std::size_t at = text.size();
      for (int left = lines + 1; left > 0 && at != std::string::npos; --left) {
        at = at == 0 ? std::string::npos : text.rfind('\n', at - 1);
      }
      if (at == std::string::npos && from > 0) continue;
      position = lines == 0 ? size : from + (at == std::string::npos ? 0 : at + 1);
      return;
    }
  }

  // Whole lines only: the rest comes when it is complete.
  void PrintNew() {
    const std::uintmax_t size = Size();
    if (size < position) position = 0;  // it was begun anew
    if (size == position) return;
    std::ifstream in(file, std::ios::binary);
    std::string text = Bytes(in, position, size);
    text.resize(text.rfind('\n') + 1);
    position += text.size();
    text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
    std::cout << base::ToUtf8(text) << std::flush;
  }

 private:
  std::uintmax_t Size() const {
    std::error_code error;
    const std::uintmax_t size = fs::file_size(file, error);
    return error ? 0 : size;
  }

  static std::string Bytes(std::ifstream& in, std::uintmax_t from, std::uintmax_t to) {
    std::string text(static_cast<std::size_t>(to - from), '\0');
    in.clear();
    in.seekg(static_cast<std::streamoff>(from));
    in.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(std::max<std::streamsize>(in.gcount(), 0)));
    return text;
  }

  fs::path file;
  std::uintmax_t position = 0;
};

// Until the user interrupts it. A new day's log is followed from its start.
int Follow(Reader reader) {
  constexpr std::chrono::milliseconds kPause(200);
  CatchInterrupts();
  while (!IsInterrupted() && std::cout) {
    std::this_thread::sleep_for(kPause);
    reader.PrintNew();
    const fs::path newest = NewestLike(reader.File());
    if (newest != reader.File()) reader = Reader(newest);
  }
  return kInterrupted;
}

int PrintLog(const LogOptions& options) {
  const fs::path log = LogOf(options.program);
  if (options.path) {
    std::cout << Utf8Of(log) << '\n';
    return kDone;
  }
  Reader reader(log);
  reader.GoToLastLines(options.lines);
  reader.PrintNew();
  return options.follow ? Follow(reader) : kDone;
}

}  // namespace

void AddLogCommand(const Command& program) {
  const auto options = std::make_shared<LogOptions>();
  const Command command = program.Add("log", "Print the last lines of the trace log");
  command.Flag("--path", options->path, "Only where the log is");
  command.Take("-n,--lines N", options->lines, "How many lines (20)").Between(0, 1000000);
  command.Flag("-f,--follow", options->follow, "Go on with new lines until it is interrupted");
  command.Take("--program NAME", options->program, "The log of this program instead of fxbox");
  command.Footer(ForShell(kExamples));
  command.Runs([options] { return PrintLog(*options); });
}

}  // namespace program
