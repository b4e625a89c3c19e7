// The backend over the system's own windows.
#include <windows.h>

#include <ole2.h>

#include <atomic>
#include <deque>
#include <mutex>

#include "toolkit/windows/GdiPlus.h"
#include "toolkit/windows/WideText.h"
#include "toolkit/windows/WindowsWindow.h"

namespace toolkit {
namespace {

constexpr UINT kRunTasks = WM_APP + 1;

// Tasks of other threads, until the windows' thread runs them.
class Tasks {
 public:
  void Add(std::function<void()> task) {
    const std::lock_guard guard(lock);
    waiting.push_back(std::move(task));
  }
  void Run() {
    while (true) {
      std::function<void()> task;
      {
        const std::lock_guard guard(lock);
        if (waiting.empty()) return;
        task = std::move(waiting.front());
        waiting.pop_front();
      }
      task();
    }
  }

 private:
  std::mutex lock;
  std::deque<std::function<void()>> waiting;
};

class WindowsBackend final : public Backend {
 public:
  std::unique_ptr<NativeWindow> NewWindow(const WindowSpec& spec, WindowEvents& events) override;
  Size PreferredSize(ControlKind kind, const std::string& text) override {
    return PreferredControlSize(system, kind, text);
  }
  int Scaled(int units) override { return system.Scaled(units); }
  Look CurrentLook() override { return system.Colours(); }
  void SetTheme(ThemeChoice choice) override;
  Size WorkArea() override;
  std::string Language() override { return SystemLanguage(); }
  bool Pump(bool wait) override;
  void Post(std::function<void()> task) override;
  bool SetClipboard(IDataObject* object) override { return SUCCEEDED(OleSetClipboard(object)); }
  IDataObject* Clipboard() override;
  BackendCounts Counts() override;

  void Begin();
  void End();

 private:
  static LRESULT CALLBACK Hook(int code, WPARAM wide, LPARAM more);
  static LRESULT CALLBACK TaskProcedure(HWND window, UINT message, WPARAM wide, LPARAM more,
                                        UINT_PTR, DWORD_PTR data);

  WindowsSystem system;
  Tasks tasks;
  std::atomic<HWND> taskWindow{nullptr};
  HHOOK hook = nullptr;
  ULONG_PTR drawing = 0;
  int users = 0;
};

// A window with what all windows together need: classes, the hook for keys, the drawing library.
// The last one takes it away, so that nothing of ours is left when the module goes.
class CountedWindow {
 public:
  explicit CountedWindow(WindowsBackend& of) : backend(of) { backend.Begin(); }
  ~CountedWindow() { backend.End(); }
  CountedWindow(const CountedWindow&) = delete;
  CountedWindow& operator=(const CountedWindow&) = delete;

 private:
  WindowsBackend& backend;
};

void WindowsBackend::Begin() {
  if (users++ > 0) return;
  OleInitialize(nullptr);
  const Gdiplus::GdiplusStartupInput input;
  Gdiplus::GdiplusStartup(&drawing, &input, nullptr);
  const INITCOMMONCONTROLSEX classes = {sizeof classes, ICC_WIN95_CLASSES | ICC_STANDARD_CLASSES};
  const ThemedControls themed;
  InitCommonControlsEx(&classes);
  WindowsWindow::RegisterClasses();
  hook = SetWindowsHookExW(WH_GETMESSAGE, Hook, nullptr, GetCurrentThreadId());
  HWND const window = CreateWindowExW(0, L"STATIC", nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                      WindowsSystem::Module(), nullptr);
  SetWindowSubclass(window, TaskProcedure, 1, reinterpret_cast<DWORD_PTR>(this));
  taskWindow = window;
}

void WindowsBackend::End() {
  if (--users > 0) return;
  HWND const window = taskWindow.exchange(nullptr);
  RemoveWindowSubclass(window, TaskProcedure, 1);
  DestroyWindow(window);
  UnhookWindowsHookEx(hook);
  WindowsWindow::UnregisterClasses();
  Gdiplus::GdiplusShutdown(drawing);
  OleUninitialize();
}

// The program around us dispatches messages as it likes; keys of dialogs are taken before.
LRESULT CALLBACK WindowsBackend::Hook(int code, WPARAM wide, LPARAM more) {
  auto& message = *reinterpret_cast<MSG*>(more);
  if (code >= 0 && wide == PM_REMOVE && WindowsWindow::TakeMessage(message)) {
    message.message = WM_NULL;
  }
  return CallNextHookEx(nullptr, code, wide, more);
}

LRESULT CALLBACK WindowsBackend::TaskProcedure(HWND window, UINT message, WPARAM wide, LPARAM more,
                                               UINT_PTR, DWORD_PTR data) {
  if (message != kRunTasks) return DefSubclassProc(window, message, wide, more);
  reinterpret_cast<WindowsBackend*>(data)->tasks.Run();
  return 0;
}

// The window, with the share in what all windows need that ends behind it.
struct WindowWithShare final : CountedWindow, WindowsWindow {
  WindowWithShare(WindowsBackend& of, WindowsSystem& shared, const WindowSpec& spec,
                  WindowEvents& receiver)
      : CountedWindow(of), WindowsWindow(spec, receiver, shared) {}
};

std::unique_ptr<NativeWindow> WindowsBackend::NewWindow(const WindowSpec& spec,
                                                        WindowEvents& events) {
  auto window = std::make_unique<WindowWithShare>(*this, system, spec, events);
  if (!window->IsMade()) return nullptr;
  return window;
}

Size WindowsBackend::WorkArea() {
  RECT area = {};
  SystemParametersInfoW(SPI_GETWORKAREA, 0, &area, 0);
  return {static_cast<int>(area.right - area.left), static_cast<int>(area.bottom - area.top)};
}

void WindowsBackend::SetTheme(ThemeChoice choice) {
  system.Choose(choice);
  WindowsWindow::TakeLook(system);
}

bool WindowsBackend::Pump(bool wait) {
  MSG message;
  bool isFirst = wait;
  while (isFirst ? GetMessageW(&message, nullptr, 0, 0) > 0
                 : PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
    isFirst = false;
    if (message.message == WM_QUIT) {
      PostQuitMessage(static_cast<int>(message.wParam));
      return false;
    }
    TranslateMessage(&message);
    DispatchMessageW(&message);
    if (wait) return true;
  }
  tasks.Run();
  return !wait;
}

void WindowsBackend::Post(std::function<void()> task) {
  tasks.Add(std::move(task));
  if (HWND const window = taskWindow) PostMessageW(window, kRunTasks, 0, 0);
}

IDataObject* WindowsBackend::Clipboard() {
  IDataObject* object = nullptr;
  return SUCCEEDED(OleGetClipboard(&object)) ? object : nullptr;
}

// Fonts and brushes of the backend itself do not count.
BackendCounts WindowsBackend::Counts() {
  BackendCounts counts = system.counts;
  counts.fonts -= 2;
  counts.drawings -= 2;
  return counts;
}

}  // namespace

Backend* OpenSystemBackend(std::string&) {
  static WindowsBackend backend;
  return &backend;
}

}  // namespace toolkit
