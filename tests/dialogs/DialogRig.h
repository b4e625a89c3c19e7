// A dialog over the window system in memory, with a host in C and recording filters.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "core/AnimDialog.h"
#include "core/AnimHost.h"
#include "core/AnimIcon.h"
#include "core/AnimInterfaces.h"
#include "dialogs/DialogClass.h"
#include "dialogs/Dialogs.h"
#include "dialogs/PdibFilterDialog.h"
#include "tests/dialogs/CDialogHost.h"
#include "toolkit/fake/FakeBackend.h"

namespace testing_support {

inline std::int32_t SetString(void* string, const char* text) {
  *static_cast<KvString*>(string) = text;
  return 0;
}

// A filter that keeps the text that it is given. `answers` off: it gives none.
class TextFilter final : public platform::ComObject<TextFilter, IAnimFilterParameter> {
 public:
  explicit TextFilter(std::string start) : text(std::move(start)) {}

  HRESULT STDMETHODCALLTYPE SetParameter(const char* newText, int) override {
    given.push_back(newText);
    text = newText;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetParameter(char* buffer, int size) override {
    if (!answers || static_cast<std::size_t>(size) <= text.size()) return S_OK;
    std::copy_n(text.c_str(), text.size() + 1, buffer);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetActiveParameter(char*, int) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetNamedValue(const char*, const char*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetNamedValue(const char*, char*, int) override { return E_NOTIMPL; }

  std::string text;
  std::vector<std::string> given;
  bool answers = true;
};

class DialogRig : public testing::Test {
 protected:
  ~DialogRig() override {
    // A dialog that is open holds itself.
    for (int pages = 0; dialog && backend.LastWindow() && pages < 4; ++pages) dialog->Close();
    runnable.Reset();
    dialog.Reset();
    if (host) ReleaseDialogHost(host);
  }

  // A dialog of a class; without `lacks` it is linked to a whole host.
  void Make(const char* progId, int lacks = 0) {
    const auto unknown = platform::ComPtr<IUnknown>::Attach(dialogs::NewFilterDialog(progId));
    ASSERT_TRUE(unknown) << progId;
    dialog = platform::ComPtr<IAnimFilterDialog>::Query(unknown.Get());
    runnable = platform::ComPtr<IAnimRunnable>::Query(unknown.Get());
    if (host) ReleaseDialogHost(host);
    host = NewDialogHost(lacks);
    platform::ComPtr<IAnimLinkable>::Query(unknown.Get())
        ->Link(static_cast<IUnknown*>(DialogHostUnknown(host)), &linkStatus);
  }
  TextFilter* Attach(const std::string& text) {
    filters.push_back(platform::ComPtr<TextFilter>::Attach(new TextFilter(text)));
    Connect(filters.back().Get());
    return filters.back().Get();
  }
  void Connect(IUnknown* filter) {
    DWORD cookie = 0;
    const auto point = platform::ComPtr<IConnectionPoint>::Query(dialog.Get());
    EXPECT_EQ(point->Advise(filter, &cookie), S_OK);
  }
  // The last reference of the test's own goes; what is open lives on.
  void DropDialog() {
    runnable.Reset();
    dialog.Reset();
  }
  void OpenDialog() { EXPECT_EQ(dialog->Open(0, 0, 0), S_OK); }
  HRESULT Call(const char* name, const void* a = nullptr, const void* b = nullptr,
               std::intptr_t c = 0) {
    return runnable->Dispatch(name, reinterpret_cast<std::intptr_t>(a),
                              reinterpret_cast<std::intptr_t>(b), c);
  }
  toolkit::FakeWindow& Window() { return *backend.LastWindow(); }
  std::string TakeLog() {
    std::string log = DialogHostLog(host);
    ForgetDialogHostLog(host);
    return log;
  }
  toolkit::ControlId Slider(const char* name) {
    return Window().ByName(name, toolkit::ControlKind::Slider);
  }
  int Position(const char* slider) { return Window().At(Slider(slider)).value; }

  toolkit::FakeBackend backend;
  toolkit::ScopedBackend scope{&backend};
  platform::ComPtr<IAnimFilterDialog> dialog;
  platform::ComPtr<IAnimRunnable> runnable;
  CDialogHost* host = nullptr;
  int linkStatus = 0;
  std::vector<platform::ComPtr<TextFilter>> filters;
};

}  // namespace testing_support
