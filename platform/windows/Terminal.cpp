// The console that a command-line program runs in.
#include <windows.h>

#include <shellapi.h>  // behind windows.h, which it needs

#include <algorithm>
#include <atomic>
#include <memory>
#include <ostream>
#include <streambuf>

#include "platform/SystemServices.h"
#include "platform/windows/Text.h"

namespace platform {
namespace {

std::atomic<void (*)()> interruptHandler{nullptr};

// Runs on a thread of its own. The second event finds no handler, and the program ends.
BOOL WINAPI Interrupted(DWORD) {
  void (*handler)() = interruptHandler.exchange(nullptr);
  if (handler) handler();
  return handler != nullptr;
}

// A stream on a console, whatever its code page is: the text goes there in the system's own form.
class ConsoleStream final : public std::streambuf {
 public:
  explicit ConsoleStream(HANDLE to) : console(to) {}

 protected:
  int_type overflow(int_type next) override {
    if (traits_type::eq_int_type(next, traits_type::eof())) return traits_type::not_eof(next);
    const char letter = traits_type::to_char_type(next);
    return xsputn(&letter, 1) == 1 ? next : traits_type::eof();
  }
  std::streamsize xsputn(const char* text, std::streamsize count) override {
    pending.append(text, static_cast<std::size_t>(count));
    return pending.find('\n') == std::string::npos || WriteOut() ? count : 0;
  }
  int sync() override { return WriteOut() ? 0 : -1; }

 private:
  bool WriteOut() {
    const std::wstring wide = WideOf(pending);
    pending.clear();
    for (std::wstring_view rest = wide; !rest.empty();) {
      constexpr std::size_t kMost = 8192;  // old consoles take no more at once
      const auto part = static_cast<DWORD>(std::min(rest.size(), kMost));
      DWORD written = 0;
      if (!WriteConsoleW(console, rest.data(), part, &written, nullptr) || written == 0)
        return false;
      rest.remove_prefix(written);
    }
    return true;
  }

  HANDLE console;
  std::string pending;
};

// Texts go to a console as they are, and to files and pipes in UTF-8. Where the console knows them,
// control sequences work from now on.
void Direct(std::ostream& stream, DWORD which) {
  const HANDLE console = GetStdHandle(which);
  DWORD mode = 0;
  if (!console || !GetConsoleMode(console, &mode)) return;
  SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
  static std::vector<std::unique_ptr<ConsoleStream>> kept;  // until the program's end
  stream.rdbuf(kept.emplace_back(std::make_unique<ConsoleStream>(console)).get());
}

bool KnowsSequences(HANDLE console) {
  DWORD mode = 0;
  return GetConsoleMode(console, &mode) && (mode & ENABLE_VIRTUAL_TERMINAL_PROCESSING);
}

// The files that a name with wildcards means, in order; the name itself where there are none. The
// system's shell leaves this to the programs.
std::vector<std::string> Expanded(const std::wstring& argument) {
  if (argument.find_first_of(L"*?") == std::wstring::npos) return {Utf8Of(argument)};
  const std::size_t folder = argument.find_last_of(L"\\/:") + 1;  // 0 when there is none
  std::vector<std::string> names;
  WIN32_FIND_DATAW found;
  const HANDLE search = FindFirstFileW(argument.c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) return {Utf8Of(argument)};
  do {
    const bool isFolder = found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY;
    if (!isFolder) names.push_back(Utf8Of(argument.substr(0, folder) + found.cFileName));
  } while (FindNextFileW(search, &found));
  FindClose(search);
  std::sort(names.begin(), names.end());
  return names.empty() ? std::vector{Utf8Of(argument)} : names;
}

class ConsoleTerminal final : public Terminal {
 public:
  // Taken from the system, since `argv` holds them in the code page, with what it lacks lost.
  std::vector<std::string> Arguments(int, char**) override {
    const auto release = [](wchar_t** block) { LocalFree(block); };
    int count = 0;
    const std::unique_ptr<wchar_t*, decltype(release)> texts(
        CommandLineToArgvW(GetCommandLineW(), &count), release);
    std::vector<std::string> arguments;
    for (int i = 1; texts && i < count; ++i) {
      for (std::string& name : Expanded(texts.get()[i])) arguments.push_back(std::move(name));
    }
    return arguments;
  }

  void Start(std::ostream& output, std::ostream& error) override {
    Direct(output, STD_OUTPUT_HANDLE);
    Direct(error, STD_ERROR_HANDLE);
  }

  std::optional<std::size_t> ReadInput(void* to, std::size_t count) override {
    constexpr std::size_t kMost = 1 << 20;
    DWORD got = 0;
    const auto part = static_cast<DWORD>(std::min(count, kMost));
    if (ReadFile(GetStdHandle(STD_INPUT_HANDLE), to, part, &got, nullptr)) return got;
    // The end of a pipe is an error of its own.
    return GetLastError() == ERROR_BROKEN_PIPE ? std::optional<std::size_t>(0) : std::nullopt;
  }

  std::optional<std::string> WriteOutput(std::string_view bytes) override {
    constexpr std::size_t kMost = 1 << 20;
    while (!bytes.empty()) {
      DWORD written = 0;
      const auto part = static_cast<DWORD>(std::min(bytes.size(), kMost));
      if (!WriteFile(GetStdHandle(STD_OUTPUT_HANDLE), bytes.data(), part, &written, nullptr)) {
        return ReasonOf(GetLastError());
      }
      if (written == 0) return ReasonOf(ERROR_WRITE_FAULT);
      bytes.remove_prefix(written);
    }
    return std::nullopt;
  }

  int ErrorWidth() override {
    CONSOLE_SCREEN_BUFFER_INFO info;
    const HANDLE console = GetStdHandle(STD_ERROR_HANDLE);
    if (!GetConsoleScreenBufferInfo(console, &info) || !KnowsSequences(console)) return 0;
    return info.srWindow.Right - info.srWindow.Left + 1;
  }

  void OnInterrupt(void (*handler)()) override {
    interruptHandler = handler;
    // Added once only: a second entry would be asked as well.
    SetConsoleCtrlHandler(Interrupted, FALSE);
    if (handler) SetConsoleCtrlHandler(Interrupted, TRUE);
  }
};

}  // namespace

Terminal& SystemTerminal() {
  static ConsoleTerminal terminal;
  return terminal;
}

}  // namespace platform
