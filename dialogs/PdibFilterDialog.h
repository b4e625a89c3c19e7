// CPdibFilterDialog: the component that stands between a dialog's window, the filters that it edits
// and the host.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "base/KvString.h"
#include "core/AnimDialog.h"
#include "core/AnimHost.h"
#include "core/AnimIcon.h"
#include "platform/component/ComObject.h"
#include "platform/component/ComPtr.h"
#include "platform/component/SystemInterfaces.h"

class CDlgFilterBase;

// Edits the common parameter text of the filters that are attached through the connection point,
// which asks for IAnimFilterParameter. All of it happens on the thread of the user interface;
// filters are reached only by SetParameter and GetParameter, so pulls go on meanwhile.
//
// A host may call anything from inside what the dialog calls on it. The object holds itself while
// it works, and while it is open.
class CPdibFilterDialog
    : public platform::ComObject<CPdibFilterDialog, IConnectionPointContainer, IConnectionPoint,
                                 IAnimLinkable, IAnimRunnable, IAnimFilterDialog,
                                 IAnimMessageReceiver, IDropSource> {
 public:
  explicit CPdibFilterDialog(const char* classProgId);
  virtual ~CPdibFilterDialog();

  HRESULT STDMETHODCALLTYPE EnumConnectionPoints(IEnumConnectionPoints** result) override;
  HRESULT STDMETHODCALLTYPE FindConnectionPoint(REFIID iid, IConnectionPoint** result) override;

  HRESULT STDMETHODCALLTYPE GetConnectionInterface(IID* iid) override;
  HRESULT STDMETHODCALLTYPE
  GetConnectionPointContainer(IConnectionPointContainer** result) override;
  HRESULT STDMETHODCALLTYPE Advise(IUnknown* sink, DWORD* cookie) override;
  HRESULT STDMETHODCALLTYPE Unadvise(DWORD cookie) override;
  HRESULT STDMETHODCALLTYPE EnumConnections(IEnumConnections** result) override;

  HRESULT STDMETHODCALLTYPE Link(IUnknown* host, int* status) override;
  HRESULT STDMETHODCALLTYPE Unlink() override;

  HRESULT STDMETHODCALLTYPE RunCall1() override { return S_OK; }
  HRESULT STDMETHODCALLTYPE RunCall2(std::intptr_t a) override;
  HRESULT STDMETHODCALLTYPE RunCall3() override { return S_OK; }
  HRESULT STDMETHODCALLTYPE RunCall4() override { return S_OK; }
  HRESULT STDMETHODCALLTYPE RunCall5(std::intptr_t a) override;
  HRESULT STDMETHODCALLTYPE Dispatch(const char* name, std::intptr_t a, std::intptr_t b,
                                     std::intptr_t c) override;

  HRESULT STDMETHODCALLTYPE GetName(char* buffer, int size) override;
  HRESULT STDMETHODCALLTYPE HostForward(std::intptr_t a) override;
  HRESULT STDMETHODCALLTYPE ClassForward1(std::intptr_t a, std::intptr_t b) override;
  HRESULT STDMETHODCALLTYPE ClassForward2(std::intptr_t a, std::intptr_t b) override;
  HRESULT STDMETHODCALLTYPE ClassForward3(std::intptr_t a, std::intptr_t b) override;
  HRESULT STDMETHODCALLTYPE ClassForward4(std::intptr_t a, std::intptr_t b) override;
  HRESULT STDMETHODCALLTYPE Open(std::intptr_t a, std::intptr_t b, std::intptr_t c) override;
  HRESULT STDMETHODCALLTYPE Close() override;
  HRESULT STDMETHODCALLTYPE Show() override;
  HRESULT STDMETHODCALLTYPE SetFirstChange() override;
  HRESULT STDMETHODCALLTYPE ClearFirstChange() override;
  HRESULT STDMETHODCALLTYPE SetModeValue(std::intptr_t value) override;
  HRESULT STDMETHODCALLTYPE GetWindowHandle(AnimWindowHandle* result) override;

  HRESULT STDMETHODCALLTYPE OnHostMessage(const AnimMessage* record) override;

  HRESULT STDMETHODCALLTYPE QueryContinueDrag(BOOL escapePressed, DWORD keyState) override;
  HRESULT STDMETHODCALLTYPE GiveFeedback(DWORD effect) override;

  // --- for the window

  // "UpdateFilter": the person changed a value. "UpdateFilterDebug": the debug window has a text.
  virtual void Notify(const std::string& text);
  // The person closed the window.
  virtual void CloseWindow();
  // The words for a key, UTF-8: the host's, or ours, or the key itself.
  std::string Words(const char* key);
  const char* InstanceId() const { return instanceId; }
  // The text of the values on show; empty without a window.
  std::string ShownText() { return WindowToParameter(); }

 protected:
  using Status = int;
  static constexpr Status kDifferent = 0, kSame = 1, kNobody = 2;

  // What is particular to a class.
  virtual void CreateDialogWindow(std::intptr_t owner) = 0;
  virtual void DestroyDialogWindow() = 0;
  virtual void ParameterToWindow(const char* text) = 0;
  virtual std::string WindowToParameter() = 0;
  virtual void LoadDefault() = 0;
  virtual void Reset() = 0;
  // What is sent to the filters; and to those whose own text cannot be had: what has changed.
  virtual std::string TextToSend() { return WindowToParameter(); }
  virtual std::string ChangesToSend() { return {}; }
  virtual void OnLinked() {}
  // True: what the dialog shows is given to the filters at once.
  virtual bool OnOpened() { return false; }
  virtual void OnClosing() {}
  virtual void OnMovedAway() {}  // the filter was dragged or deleted out of the dialog
  virtual void OnNamedCall(const char*, std::intptr_t) {}
  virtual HRESULT OnForward(int, std::intptr_t, std::intptr_t) { return S_OK; }

  // Pixels (blue, green, red) of what comes into the first filter that can tell; none otherwise.
  std::vector<std::uint8_t> ReadSample() const;
  // Reads the attached filters; *result becomes the common text, or the dialog's own.
  Status CollectParameter(std::string* result);
  void Refresh();
  void ApplyToFilters();
  void ApplyDebugToFilters();

  // 0 without a host, as the posts of a host that does not answer.
  std::intptr_t Post(int message, std::intptr_t a, std::intptr_t b = 0);
  // Looks up a page, posts there, and lets go of it.
  void PostToPage(const char* page, int message, std::intptr_t a, std::intptr_t b = 0);
  std::intptr_t PostText(int message, const std::string& text);

  const std::string& LastText() const { return lastText; }
  bool HasHost() const { return hostRegistry && hostPage; }
  // Holds the object while one of its operations runs.
  auto Hold() { return platform::ComPtr<IAnimRunnable>(this); }

  std::unique_ptr<CDlgFilterBase> window;

 private:
  struct NamedCall;
  static const NamedCall kNamedCalls[];

  HRESULT CallTimer(std::intptr_t a, std::intptr_t b, std::intptr_t c);
  HRESULT CallLocalize(std::intptr_t a, std::intptr_t b, std::intptr_t c);
  HRESULT CallContextHelp(std::intptr_t a, std::intptr_t b, std::intptr_t c);
  HRESULT CallLock(std::intptr_t a, std::intptr_t b, std::intptr_t c);
  HRESULT CallCheckDragDrop(std::intptr_t a, std::intptr_t b, std::intptr_t c);
  HRESULT CallTop(std::intptr_t a, std::intptr_t b, std::intptr_t c);
  HRESULT CallTopEnabled(std::intptr_t a, std::intptr_t b, std::intptr_t c);
  HRESULT CallTopDelete(std::intptr_t a, std::intptr_t b, std::intptr_t c);
  HRESULT CallLockUnlocked(std::intptr_t a, std::intptr_t b, std::intptr_t c);
  HRESULT CallTopDrag(std::intptr_t a, std::intptr_t b, std::intptr_t c);
  HRESULT CallMakeBubble(std::intptr_t a, std::intptr_t b, std::intptr_t c);
  HRESULT CallShowBubble(std::intptr_t a, std::intptr_t b, std::intptr_t c);
  HRESULT CallHideBubble(std::intptr_t a, std::intptr_t b, std::intptr_t c);
  HRESULT CallClose(std::intptr_t a, std::intptr_t b, std::intptr_t c);

  void ClearLinks();
  void AnnounceFirstChange();
  void ApplyAndRefresh();
  void GiveText(const std::string& text);
  void SignOff();
  bool LowerUse();
  void LetGoOfItself();
  HRESULT RunDrag(IDataObject* object, DWORD& effect);
  Status CompareTexts(std::string& text);

  std::vector<platform::ComPtr<IUnknown>> sinks;  // null where one was taken away
  int useCount = 0;
  KvString progId;
  platform::ComPtr<IAnimHostRegistry> hostRegistry;
  platform::ComPtr<IAnimHostOptional> hostOptional;
  platform::ComPtr<IAnimHostPage> hostPage;
  platform::ComPtr<IAnimHostMessages> hostMessages;
  int pageId = 0;
  KvString instanceId;
  bool firstChangePending = false;
  std::string lastText;
  bool dataLocked = false;
  bool needsDefault = true;
  std::intptr_t modeValue = 0;

  bool mixed = true;
  bool hasUnreadable = false;  // a filter whose text cannot be had
  bool isClosing = false;
  bool holdsItself = false;
};
