// The console that a command-line program runs in.
#include <windows.h>

#include <shellapi.h>  // behind windows.h, which it needs

#include <atomic>
#include <memory>

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

class ConsoleTerminal final : public Terminal {
 public:
  // Taken from the system, since `argv` holds them in the code page, with what it lacks lost.
  std::vector<std::string> Arguments(int, char**) override {
    const auto release = [](wchar_t** block) { LocalFree(block); };
    int count = 0;
    const std::unique_ptr<wchar_t*, decltype(release)> texts(
        CommandLineToArgvW(GetCommandLineW(), &count), release);
    std::vector<std::string> arguments;
    for (int i = 1; texts && i < count; ++i) arguments.push_back(Utf8Of(texts.get()[i]));
    return arguments;
  }

  int ErrorWidth() override {
    CONSOLE_SCREEN_BUFFER_INFO info;
    if (!GetConsoleScreenBufferInfo(GetStdHandle(STD_ERROR_HANDLE), &info)) return 0;
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
