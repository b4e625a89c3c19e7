// A dialog that is open over a filter with a picture, as a host has it, in the system's windows.
#pragma once

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <thread>

#include "core/AnimDialog.h"
#include "core/AnimHost.h"
#include "core/AnimIcon.h"
#include "core/AnimInterfaces.h"
#include "dialogs/DialogClass.h"
#include "dialogs/Dialogs.h"
#include "platform/component/SystemInterfaces.h"
#include "tests/dialogs/CDialogHost.h"
#include "tests/filters/ClassOf.h"
#include "tests/support/TestFilters.h"
#include "toolkit/Backend.h"

namespace testing_support {

// The system's windows, in English, of which the last one is known.
class ObservedBackend final : public toolkit::Backend {
 public:
  explicit ObservedBackend(toolkit::Backend& system) : real(system) {}
  toolkit::NativeWindow* last = nullptr;

  std::unique_ptr<toolkit::NativeWindow> NewWindow(const toolkit::WindowSpec& spec,
                                                   toolkit::WindowEvents& events) override {
    auto window = real.NewWindow(spec, events);
    last = window.get();
    return window;
  }
  toolkit::Size PreferredSize(toolkit::ControlKind kind, const std::string& text) override {
    return real.PreferredSize(kind, text);
  }
  int Scaled(int units) override { return real.Scaled(units); }
  toolkit::Look CurrentLook() override { return real.CurrentLook(); }
  void SetTheme(toolkit::ThemeChoice choice) override { real.SetTheme(choice); }
  toolkit::Size WorkArea() override { return real.WorkArea(); }
  std::string Language() override { return "en"; }
  bool Pump(bool wait) override { return real.Pump(wait); }
  void Post(std::function<void()> task) override { real.Post(std::move(task)); }
  bool SetClipboard(IDataObject* object) override { return real.SetClipboard(object); }
  IDataObject* Clipboard() override { return real.Clipboard(); }
  toolkit::BackendCounts Counts() override { return real.Counts(); }

 private:
  toolkit::Backend& real;
};

// Soft hills of colour.
inline Picture Hills() {
  Picture picture(160, 120);
  for (int y = 0; y < picture.height; ++y) {
    for (int x = 0; x < picture.width; ++x) {
      for (int i = 0; i < 3; ++i) {
        const double height = std::sin(x * (0.02 + 0.01 * i)) * std::cos(y * 0.03 - i);
        picture.Colour(x, y)[i] = static_cast<BYTE>(120 + 30 * i + 70 * height);
      }
      picture.Mask(x, y) = 0;
    }
  }
  return picture;
}

// A dialog that is open over a filter, as a host has it.
class OpenDialog {
 public:
  explicit OpenDialog(const DialogClass& row)
      : rig(Hills(), ClassOf(row.progId)), host(NewDialogHost(0)) {
    if (const char* example = ClassOf(row.progId).example) rig.Filter().SetParameter(example, 1);
    rig.PullWhole();
    const auto made = platform::ComPtr<IUnknown>::Attach(dialogs::NewFilterDialog(row.progId));
    platform::ComPtr<IAnimLinkable>::Query(made.Get())
        ->Link(static_cast<IUnknown*>(DialogHostUnknown(host)), nullptr);
    DWORD cookie = 0;
    platform::ComPtr<IConnectionPoint>::Query(made.Get())
        ->Advise(static_cast<IAnimFilter*>(&rig.Filter()), &cookie);
    dialog = platform::ComPtr<IAnimFilterDialog>::Query(made.Get());
    dialog->Open(0, 0, 0);
    dialog->Show();
  }
  ~OpenDialog() {
    dialog->Close();
    dialog.Reset();
    ReleaseDialogHost(host);
  }
  OpenDialog(const OpenDialog&) = delete;
  OpenDialog& operator=(const OpenDialog&) = delete;

 private:
  Rig rig;
  CDialogHost* host;
  platform::ComPtr<IAnimFilterDialog> dialog;
};

inline void PumpFor(toolkit::Backend& backend, int milliseconds) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
  while (std::chrono::steady_clock::now() < end && backend.Pump(false)) {
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
}

}  // namespace testing_support
