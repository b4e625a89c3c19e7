// The host's side of a filter dialog that stands alone: every operation has a quiet answer.
#pragma once

#include "core/AnimHost.h"
#include "platform/component/ComObject.h"

namespace host {

// Derive as `class CThing final : public QuietDialogHost<CThing>` and override what the host wants
// to hear of, which is Post at the least. There is one page, which answers to every name, and no
// words: the dialogs have words of their own. All calls come on the thread of the windows.
template <class Derived>
class QuietDialogHost
    : public platform::ComObject<Derived, IAnimHostRegistry, IAnimHostPage, IAnimHostMessages> {
 public:
  HRESULT STDMETHODCALLTYPE RegisterDialog(const char*, IUnknown*) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE UnregisterDialog(const char*) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE ShowDialog(const char*) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE Forward(std::intptr_t) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetButtonState(const char*, int) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE Localize(const char*, KvString*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE FindPage(const char*, int* page) override {
    if (page) *page = 1;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE ReleasePage(int) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE SetReceiver(int, IUnknown*) override { return S_OK; }

  // What IAnimFilterCreator::CreateFilterDialog takes as its host.
  std::intptr_t AsArgument() {
    auto* const registry = static_cast<IAnimHostRegistry*>(this);
    return reinterpret_cast<std::intptr_t>(static_cast<IUnknown*>(registry));
  }

 protected:
  QuietDialogHost() = default;
  ~QuietDialogHost() = default;
};

}  // namespace host
