// The person at the screen, on a system without one: the standard error output.
#include <unistd.h>

#include <cstdlib>

#include "base/CodePage.h"
#include "platform/MessageButtons.h"
#include "platform/SystemServices.h"

namespace platform {
namespace {

void WriteToErrorOutput(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(STDERR_FILENO, bytes.data(), bytes.size());
    if (written <= 0) return;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
}

class ErrorOutputDesktop final : public Desktop {
 public:
  void ShowMessage(const std::string& text, const std::string& caption) override {
    WriteToErrorOutput(base::ToUtf8(caption + ": " + text + "\n"));
  }

  int Ask(const std::string& text, const std::string& caption, unsigned style) override {
    ShowMessage(text, caption);
    return DefaultButton(style);
  }

  void Beep(int, int) override {
    if (isatty(STDERR_FILENO)) WriteToErrorOutput("\a");
  }

  // There is no debugger that would take it away, so it shows only when it is asked for.
  void WriteDebugOutput(const std::string& text) override {
    if (std::getenv("FXBOX_DEBUG")) WriteToErrorOutput(base::ToUtf8(text));
  }
};

}  // namespace

Desktop& SystemDesktop() {
  static ErrorOutputDesktop desktop;
  return desktop;
}

}  // namespace platform
