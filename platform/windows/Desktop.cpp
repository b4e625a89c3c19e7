// The person at the screen: message boxes, the speaker, the debugger.
#include <windows.h>

#include <cstdlib>

#include "platform/MessageButtons.h"
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
    ShowBox(text, caption, MB_OK | MB_ICONWARNING | MB_TASKMODAL);
  }

  int Ask(const std::string& text, const std::string& caption, unsigned style) override {
    if (const HWND splash = FindWindowA("SplashScreen", nullptr)) {
      PostMessageA(splash, kHideSplash, 0, 0);
    }
    SwallowReturnKey();
    return ShowBox(text, caption, style);
  }

  void Beep(int hertz, int milliseconds) override {
    if (hertz > 0 && milliseconds > 0 && SomebodyIsThere()) {
      ::Beep(static_cast<DWORD>(hertz), static_cast<DWORD>(milliseconds));
    }
  }

  void WriteDebugOutput(const std::string& text) override { OutputDebugStringA(text.c_str()); }

 private:
  static constexpr UINT kHideSplash = 0x403;

  static int ShowBox(const std::string& text, const std::string& caption, unsigned style) {
    const int button =
        SomebodyIsThere() ? MessageBoxA(nullptr, text.c_str(), caption.c_str(), style) : 0;
    if (button) return button;
    WriteToErrorOutput(caption + ": " + text + "\r\n");
    return DefaultButton(style);
  }

  // The key that a user still holds down must not answer a box that he has not seen yet. A key that
  // is stuck does not hold the program up.
  static void SwallowReturnKey() {
    constexpr int kMostTries = 500;
    constexpr DWORD kPauseInMilliseconds = 10;
    for (int i = 0; i < kMostTries && (GetAsyncKeyState(VK_RETURN) & 0x8000); ++i) {
      MSG message;
      while (PeekMessageA(&message, nullptr, WM_KEYFIRST, WM_KEYLAST, PM_REMOVE)) {
      }
      Sleep(kPauseInMilliseconds);
    }
  }
};

}  // namespace

Desktop& SystemDesktop() {
  static SystemDesktopService desktop;
  return desktop;
}

}  // namespace platform
