// The terminal that a command-line program runs in.
#include <poll.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <atomic>

#include "platform/SystemServices.h"
#include "platform/linux/Descriptor.h"

namespace platform {
namespace {

std::atomic<void (*)()> interruptHandler{nullptr};
static_assert(std::atomic<void (*)()>::is_always_lock_free, "is read in a signal handler");

std::atomic<bool> interrupted{false};

constexpr int kSignals[] = {SIGINT, SIGTERM};

void SetDisposition(int number, void (*handler)(int)) {
  struct sigaction action = {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;
  sigemptyset(&action.sa_mask);
  sigaction(number, &action, nullptr);
}

// From the second signal on the program ends at once.
void Interrupted(int) {
  interrupted = true;
  for (const int number : kSignals) SetDisposition(number, SIG_DFL);
  if (void (*handler)() = interruptHandler.load()) handler();
}

// A program that was started in the background, out of the reach of Ctrl-C, stays so.
bool IsIgnored(int number) {
  struct sigaction current = {};
  return sigaction(number, nullptr, &current) == 0 && current.sa_handler == SIG_IGN;
}

class SystemTerminalService final : public Terminal {
 public:
  std::vector<std::string> Arguments(int argc, char** argv) override {
    std::vector<std::string> arguments;
    for (int i = 1; i < argc && argv[i]; ++i) arguments.emplace_back(argv[i]);
    return arguments;
  }

  void Start(std::ostream&, std::ostream&) override { signal(SIGPIPE, SIG_IGN); }

  std::optional<std::size_t> ReadInput(void* to, std::size_t count) override {
    // The signal may come to another thread, or right ahead of the wait, and ends neither then.
    constexpr int kPause = 100;
    pollfd waiting = {STDIN_FILENO, POLLIN, 0};
    while (poll(&waiting, 1, kPause) <= 0) {
      if (interrupted) return std::nullopt;
    }
    for (;;) {
      const ssize_t got = read(STDIN_FILENO, to, count);
      if (got >= 0) return static_cast<std::size_t>(got);
      if (errno != EINTR) return std::nullopt;
    }
  }

  std::optional<std::string> WriteOutput(std::string_view bytes) override {
    const int error = WriteAll(STDOUT_FILENO, bytes);
    return error ? std::optional(std::generic_category().message(error)) : std::nullopt;
  }

  int ErrorWidth() override {
    winsize size = {};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
  }

  void OnInterrupt(void (*handler)()) override {
    interruptHandler = handler;
    for (const int number : kSignals) {
      if (!IsIgnored(number)) SetDisposition(number, handler ? Interrupted : SIG_DFL);
    }
  }
};

}  // namespace

Terminal& SystemTerminal() {
  static SystemTerminalService terminal;
  return terminal;
}

}  // namespace platform
