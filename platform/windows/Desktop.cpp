// The person at the screen: message boxes, the speaker, the debugger.
#include <windows.h>

#include <cstdlib>

#include "platform/SystemServices.h"

namespace platform {
namespace {

void WriteToErrorOutput(const std::string& text) {
  DWORD written = 0;
  WriteFile(GetStdHandle(STD_ERROR_HANDLE), text.data(), static_cast<DWORD>(text.size()), &written,
            nullptr);
}

// In a service or a test nobody could dismiss a box.
bool SomebodyIsThere() {
  if (std::getenv("FXBOX_QUIET")) return false;
  USEROBJECTFLAGS flags = {};
  return GetUserObjectInformationA(GetProcessWindowStation(), UOI_FLAGS, &flags, sizeof flags,
                                   nullptr) &&
         (flags.dwFlags & WSF_VISIBLE);
}

class SystemDesktopService final : public Desktop {
 public:
  void ShowMessage(const std::string& text, const std::string& caption) override {
    const bool shown = SomebodyIsThere() && MessageBoxA(nullptr, text.c_str(), caption.c_str(),
                                                        MB_OK | MB_ICONWARNING | MB_TASKMODAL) != 0;
    if (!shown) WriteToErrorOutput(caption + ": " + text + "\r\n");
  }

  void Beep(int hertz, int milliseconds) override {
    if (hertz > 0 && milliseconds > 0 && SomebodyIsThere()) {
      ::Beep(static_cast<DWORD>(hertz), static_cast<DWORD>(milliseconds));
    }
  }

  void WriteDebugOutput(const std::string& text) override { OutputDebugStringA(text.c_str()); }
};

}  // namespace

Desktop& SystemDesktop() {
  static SystemDesktopService desktop;
  return desktop;
}

}  // namespace platform
