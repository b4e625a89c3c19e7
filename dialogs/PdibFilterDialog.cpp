#include "dialogs/PdibFilterDialog.h"

#include <olectl.h>

#include <algorithm>
#include <atomic>
#include <cstring>

#include "base/CodePage.h"
#include "core/AnimInterfaces.h"
#include "core/AnimSample.h"
#include "core/DataXferObj.h"
#include "core/GrowingText.h"
#include "core/ParameterText.h"
#include "core/TransferFormats.h"
#include "dialogs/Connections.h"
#include "dialogs/DlgDebug.h"
#include "dialogs/DlgFilterBase.h"
#include "dialogs/Words.h"
#include "platform/component/Guard.h"

namespace {

using platform::ComPtr;
using platform::Guard;

constexpr char kDispatcher[] = "ZN_FilterDialog_Dispatcher";
constexpr char kGallery[] = "GalleryPage";
constexpr char kHistory[] = "ProcessFilterHistoryPage";
constexpr char kNotifications[] = "ToolBarNotifications";

constexpr int kResetWord = 2;
constexpr int kAllowedEffects = DROPEFFECT_COPY | DROPEFFECT_MOVE;

constexpr int kFirstTextSize = 1023;
constexpr int kMostWords = 16 << 20;

KvString NewInstanceId(const char* progId) {
  static std::atomic<int> count{0};
  KvString id;
  id.Format("%s#%d", progId, ++count);
  return id;
}

std::intptr_t AsArgument(const void* pointer) {
  return reinterpret_cast<std::intptr_t>(pointer);
}

const char* AsText(std::intptr_t argument) {
  return reinterpret_cast<const char*>(argument);
}

std::string TextOf(IAnimFilterParameter& filter) {
  return core::GrowingText(
      [&](char* buffer, int size) { return filter.GetParameter(buffer, size); }, kFirstTextSize);
}

HRESULT AnswerFlag(std::intptr_t target, bool value) {
  if (auto* result = reinterpret_cast<int*>(target)) *result = value;
  return value;
}

}  // namespace

CPdibFilterDialog::CPdibFilterDialog(const char* classProgId)
    : progId(classProgId), instanceId(NewInstanceId(classProgId)) {}

CPdibFilterDialog::~CPdibFilterDialog() {
  CDlgDebug::Forget(this);
}

// --- connection points

HRESULT CPdibFilterDialog::EnumConnectionPoints(IEnumConnectionPoints** result) {
  return dialogs::ListConnectionPoint(this, result);
}

HRESULT CPdibFilterDialog::FindConnectionPoint(REFIID iid, IConnectionPoint** result) {
  if (!result) return E_POINTER;
  *result = nullptr;
  if (!base::SameGuid(iid, IAnimFilterParameter::kIid)) return CONNECT_E_NOCONNECTION;
  AddRef();
  *result = this;
  return S_OK;
}

HRESULT CPdibFilterDialog::GetConnectionInterface(IID* iid) {
  if (!iid) return E_POINTER;
  *iid = IAnimFilterParameter::kIid;
  return S_OK;
}

HRESULT CPdibFilterDialog::GetConnectionPointContainer(IConnectionPointContainer** result) {
  if (!result) return E_POINTER;
  AddRef();
  *result = this;
  return S_OK;
}

// A cookie is the place in the list, from 1.
HRESULT CPdibFilterDialog::Advise(IUnknown* sink, DWORD* cookie) {
  if (!sink || !cookie) return E_POINTER;
  *cookie = 0;
  return Guard([&] {
    sinks.emplace_back(sink);
    *cookie = static_cast<DWORD>(sinks.size());
    return S_OK;
  });
}

HRESULT CPdibFilterDialog::Unadvise(DWORD cookie) {
  if (cookie == 0 || cookie > sinks.size() || !sinks[cookie - 1]) return CONNECT_E_NOCONNECTION;
  const auto gone = std::move(sinks[cookie - 1]);
  while (!sinks.empty() && !sinks.back()) sinks.pop_back();
  return S_OK;
}

HRESULT CPdibFilterDialog::EnumConnections(IEnumConnections** result) {
  return dialogs::ListConnections(sinks, result);
}

// --- links to the host

void CPdibFilterDialog::ClearLinks() {
  const auto registry = std::move(hostRegistry);
  const auto optional = std::move(hostOptional);
  const auto page = std::move(hostPage);
  const auto messages = std::move(hostMessages);
}

HRESULT CPdibFilterDialog::Link(IUnknown* host, int* status) {
  const auto self = Hold();
  if (status) *status = 0;
  return Guard([&] {
    ClearLinks();
    if (!host) return S_OK;
    hostRegistry = ComPtr<IAnimHostRegistry>::Query(host);
    hostOptional = ComPtr<IAnimHostOptional>::Query(host);
    hostPage = ComPtr<IAnimHostPage>::Query(host);
    hostMessages = ComPtr<IAnimHostMessages>::Query(host);
    if (!hostRegistry || !hostPage || !hostMessages) {
      ClearLinks();
      if (status) *status = -1;
      return S_OK;
    }
    OnLinked();
    CDlgDebug::Provide(this);
    return S_OK;
  });
}

HRESULT CPdibFilterDialog::Unlink() {
  return Link(nullptr, nullptr);
}

std::intptr_t CPdibFilterDialog::Post(int message, std::intptr_t a, std::intptr_t b) {
  const auto messages = hostMessages;
  std::intptr_t result = 0;
  if (messages) messages->Post(pageId, message, a, b, &result);
  return result;
}

std::intptr_t CPdibFilterDialog::PostText(int message, const std::string& text) {
  return Post(message, AsArgument(text.c_str()));
}

void CPdibFilterDialog::PostToPage(const char* name, int message, std::intptr_t a,
                                   std::intptr_t b) {
  const auto messages = hostMessages;
  if (!messages) return;
  int page = 0;
  std::intptr_t result = 0;
  messages->FindPage(name, &page);
  messages->Post(page, message, a, b, &result);
  messages->ReleasePage(page);
}

std::string CPdibFilterDialog::Words(const char* key) {
  if (!key) return {};
  KvString words;
  const auto page = hostPage;
  if (page && SUCCEEDED(page->Localize(key, &words)) && !words.IsEmpty()) {
    return base::ToUtf8(words.View());
  }
  toolkit::Backend* const backend = toolkit::OpenBackend();
  const char* own = dialogs::FindWords(key, backend ? backend->Language() : "en");
  return own ? own : key;
}

// --- the common text

// 2, 1 or 0 as CollectParameter answers; `text` becomes the one that the filters agree on so far.
CPdibFilterDialog::Status CPdibFilterDialog::CompareTexts(std::string& text) {
  Status status = kNobody;
  hasUnreadable = false;
  const auto filters = sinks;  // a filter may call back
  for (const auto& sink : filters) {
    const auto filter = ComPtr<IAnimFilterParameter>::Query(sink.Get());
    if (!filter) continue;
    const std::string own = TextOf(*filter.Get());
    if (own.empty()) {
      hasUnreadable = true;
      return kDifferent;
    }
    if (status == kSame && own != text) return kDifferent;
    status = kSame;
    text = own;
  }
  return status;
}

CPdibFilterDialog::Status CPdibFilterDialog::CollectParameter(std::string* result) {
  std::string text;
  const Status status = CompareTexts(text);
  if (dataLocked || status != kNobody) {
    if (!text.empty()) lastText = text;
  } else {
    if (needsDefault) LoadDefault();
    lastText.clear();
  }
  if (result) {
    if (lastText.empty()) lastText = WindowToParameter();
    *result = lastText;
  }
  needsDefault = false;
  return status;
}

void CPdibFilterDialog::Refresh() {
  mixed = false;
  if (modeValue == 0) {
    std::string text;
    Status status = CollectParameter(&text);
    if (firstChangePending) status = kDifferent;
    if (status != kDifferent && !text.empty()) ParameterToWindow(text.c_str());
    mixed = status != kSame;
  }
  if (window) {
    window->SetMixed(mixed);
  } else if (const auto page = hostPage) {
    page->SetButtonState("ButtonTop", mixed);
  }
}

void CPdibFilterDialog::GiveText(const std::string& text) {
  const std::string changes = hasUnreadable ? ChangesToSend() : std::string();
  const auto filters = sinks;
  for (const auto& sink : filters) {
    const auto filter = ComPtr<IAnimFilterParameter>::Query(sink.Get());
    if (!filter) continue;
    if (!hasUnreadable || !TextOf(*filter.Get()).empty()) {
      filter->SetParameter(text.c_str(), 1);
    } else if (!changes.empty()) {
      filter->SetParameter(changes.c_str(), 1);
    }
  }
}

// Without a window there is nothing to give.
void CPdibFilterDialog::ApplyToFilters() {
  const std::string text = TextToSend();
  if (!text.empty()) GiveText(text);
}

void CPdibFilterDialog::ApplyDebugToFilters() {
  const std::string text = CDlgDebug::Text();
  if (!text.empty()) GiveText(text);
}

std::vector<std::uint8_t> CPdibFilterDialog::ReadSample() const {
  constexpr int kMost = 16384;
  std::vector<std::uint8_t> pixels;
  const auto filters = sinks;
  for (const auto& sink : filters) {
    const auto filter = ComPtr<IAnimPictureSample>::Query(sink.Get());
    if (!filter) continue;
    int count = 0;
    pixels.resize(3 * kMost);
    filter->ReadSample(pixels.data(), kMost, &count);
    pixels.resize(3 * static_cast<std::size_t>(std::clamp(count, 0, kMost)));
    break;
  }
  return pixels;
}

void CPdibFilterDialog::AnnounceFirstChange() {
  if (!firstChangePending) return;
  firstChangePending = false;
  Post(core::kMessageFirstChange, AsArgument(static_cast<const char*>(instanceId)));
}

void CPdibFilterDialog::ApplyAndRefresh() {
  Post(core::kMessageBracketBegin, modeValue, core::kBracketKind);
  AnnounceFirstChange();
  ApplyToFilters();
  Refresh();
  Post(core::kMessageBracketEnd, modeValue, core::kBracketKind);
}

void CPdibFilterDialog::Notify(const std::string& text) {
  const auto self = Hold();
  const bool isDebug = text == "UpdateFilterDebug";
  if (!isDebug && text != "UpdateFilter") return;
  Post(core::kMessageBracketBegin, modeValue, core::kBracketKind);
  isDebug ? ApplyDebugToFilters() : ApplyToFilters();
  Post(core::kMessageBracketEnd, modeValue, core::kBracketKind);
  Refresh();
}

// --- opening and closing

HRESULT CPdibFilterDialog::Open(std::intptr_t, std::intptr_t, std::intptr_t owner) {
  const auto self = Hold();
  return Guard([&] {
    const auto registry = hostRegistry;
    if (registry && hostPage) {
      CreateDialogWindow(owner);
      Refresh();
      ++useCount;  // the host may close the dialog at once
      if (!holdsItself) AddRef();
      holdsItself = true;
      registry->RegisterDialog(instanceId, static_cast<IAnimRunnable*>(this));
      if (modeValue != 0 && window) window->SetOnTop(true);
    }
    if (const auto messages = hostMessages) {
      messages->FindPage(kDispatcher, &pageId);
      messages->SetReceiver(pageId, static_cast<IAnimMessageReceiver*>(this));
    }
    if (OnOpened()) ApplyAndRefresh();
    return window ? S_OK : S_FALSE;
  });
}

void CPdibFilterDialog::SignOff() {
  if (const auto messages = hostMessages) {
    messages->ReleasePage(pageId);
    messages->SetReceiver(pageId, nullptr);
  }
  Post(core::kMessageClosed, AsArgument(static_cast<const char*>(instanceId)));
}

// True when no page has the dialog open any more. Without a host nothing is counted.
bool CPdibFilterDialog::LowerUse() {
  const auto registry = hostRegistry;
  if (!registry || !hostPage) return false;
  registry->UnregisterDialog(instanceId);
  OnClosing();
  if (useCount > 0) --useCount;
  return useCount == 0;
}

void CPdibFilterDialog::LetGoOfItself() {
  if (std::exchange(holdsItself, false)) Release();
}

HRESULT CPdibFilterDialog::Close() {
  const auto self = Hold();
  if (isClosing) return S_OK;  // called from inside
  return Guard([&] {
    isClosing = true;
    SignOff();
    const bool isLast = LowerUse();
    isClosing = false;
    if (!isLast) return S_OK;
    ClearLinks();
    DestroyDialogWindow();
    LetGoOfItself();
    return S_OK;
  });
}

void CPdibFilterDialog::CloseWindow() {
  const auto self = Hold();
  if (isClosing) return;
  Notify("FilterClosed");
  isClosing = true;
  SignOff();
  const bool isLast = LowerUse();
  isClosing = false;
  if (!isLast) return;
  const auto messages = hostMessages;  // the one link that stays
  ClearLinks();
  hostMessages = messages;
  DestroyDialogWindow();
  LetGoOfItself();
}

HRESULT CPdibFilterDialog::Show() {
  const auto self = Hold();
  return Guard([&] {
    if (const auto registry = hostRegistry) registry->ShowDialog(instanceId);
    if (!window) return S_OK;
    PostToPage(kGallery, core::kMessageWindowShown, AsArgument(window->Handle()));
    if (window) window->Show();
    if (window) window->TakeFocus();
    Refresh();
    return S_OK;
  });
}

// --- the small operations

HRESULT CPdibFilterDialog::GetName(char* buffer, int size) {
  if (!buffer || size <= progId.GetLength()) return E_FAIL;
  std::memcpy(buffer, progId, static_cast<std::size_t>(progId.GetLength()) + 1);
  return S_OK;
}

HRESULT CPdibFilterDialog::HostForward(std::intptr_t a) {
  const auto registry = hostRegistry;
  return registry ? registry->Forward(a) : E_FAIL;
}

HRESULT CPdibFilterDialog::ClassForward1(std::intptr_t a, std::intptr_t b) {
  return Guard([&] { return OnForward(1, a, b); });
}

HRESULT CPdibFilterDialog::ClassForward2(std::intptr_t a, std::intptr_t b) {
  return Guard([&] { return OnForward(2, a, b); });
}

HRESULT CPdibFilterDialog::ClassForward3(std::intptr_t a, std::intptr_t b) {
  return Guard([&] { return OnForward(3, a, b); });
}

HRESULT CPdibFilterDialog::ClassForward4(std::intptr_t a, std::intptr_t b) {
  return Guard([&] { return OnForward(4, a, b); });
}

HRESULT CPdibFilterDialog::RunCall2(std::intptr_t a) {
  return Guard([&] { return OnForward(5, a, 0); });
}

HRESULT CPdibFilterDialog::RunCall5(std::intptr_t a) {
  return Guard([&] { return OnForward(6, a, 0); });
}

HRESULT CPdibFilterDialog::SetFirstChange() {
  firstChangePending = true;
  return S_OK;
}

HRESULT CPdibFilterDialog::ClearFirstChange() {
  firstChangePending = false;
  return S_OK;
}

HRESULT CPdibFilterDialog::SetModeValue(std::intptr_t value) {
  modeValue = value;
  return S_OK;
}

HRESULT CPdibFilterDialog::GetWindowHandle(AnimWindowHandle* result) {
  if (!result) return E_POINTER;
  *result = window ? window->Handle() : nullptr;
  return *result ? S_OK : 1;
}

HRESULT CPdibFilterDialog::OnHostMessage(const AnimMessage* record) {
  if (!record) return E_POINTER;
  const auto self = Hold();
  const bool isReset =
      record->number == core::kMessageReset && record->first != 0 && record->second == kResetWord;
  if (!isReset) return S_OK;
  return Guard([&] {
    Reset();
    return S_OK;
  });
}

HRESULT CPdibFilterDialog::QueryContinueDrag(BOOL escapePressed, DWORD keyState) {
  if (escapePressed) return DRAGDROP_S_CANCEL;
  return keyState & MK_LBUTTON ? S_OK : DRAGDROP_S_DROP;
}

HRESULT CPdibFilterDialog::GiveFeedback(DWORD) {
  return DRAGDROP_S_USEDEFAULTCURSORS;
}

// --- the named calls

struct CPdibFilterDialog::NamedCall {
  const char* name;
  HRESULT (CPdibFilterDialog::*run)(std::intptr_t a, std::intptr_t b, std::intptr_t c);
};

const CPdibFilterDialog::NamedCall CPdibFilterDialog::kNamedCalls[] = {
    {"TimerCallback", &CPdibFilterDialog::CallTimer},
    {"Localize", &CPdibFilterDialog::CallLocalize},
    {"GetContexthelp", &CPdibFilterDialog::CallContextHelp},
    {"bu_lock", &CPdibFilterDialog::CallLock},
    {"CheckDragDrop", &CPdibFilterDialog::CallCheckDragDrop},
    {"ButtonTop", &CPdibFilterDialog::CallTop},
    {"ButtonTopCopyEnabled", &CPdibFilterDialog::CallTopEnabled},
    {"ButtonTopDelete", &CPdibFilterDialog::CallTopDelete},
    {"LockUnlocked", &CPdibFilterDialog::CallLockUnlocked},
    {"ButtonTopDrag", &CPdibFilterDialog::CallTopDrag},
    {"GenerateBubbleHelpText", &CPdibFilterDialog::CallMakeBubble},
    {"ShowBubbleHelpText", &CPdibFilterDialog::CallShowBubble},
    {"HideBubbleHelpText", &CPdibFilterDialog::CallHideBubble},
    {"ButtonClose", &CPdibFilterDialog::CallClose}};

HRESULT CPdibFilterDialog::Dispatch(const char* name, std::intptr_t a, std::intptr_t b,
                                    std::intptr_t c) {
  if (!name) return E_POINTER;
  const auto self = Hold();
  return Guard([&] {
    for (const NamedCall& call : kNamedCalls) {
      if (std::strcmp(call.name, name) == 0) return (this->*call.run)(a, b, c);
    }
    Notify(name);
    OnNamedCall(name, a);
    return S_OK;
  });
}

HRESULT CPdibFilterDialog::CallTimer(std::intptr_t text, std::intptr_t, std::intptr_t) {
  if (text) Notify(AsText(text));
  return -1;
}

HRESULT CPdibFilterDialog::CallLocalize(std::intptr_t key, std::intptr_t buffer,
                                        std::intptr_t size) {
  const std::string words = base::FromUtf8(Words(AsText(key)));
  const int room = static_cast<int>(std::clamp<std::intptr_t>(size, 0, kMostWords));
  CopyParameterText(words, 0, reinterpret_cast<char*>(buffer), room);
  return S_OK;
}

HRESULT CPdibFilterDialog::CallContextHelp(std::intptr_t text, std::intptr_t, std::intptr_t) {
  if (!text) return S_OK;
  const std::string copy = AsText(text);
  PostToPage(kNotifications, core::kMessageContextHelp, AsArgument(copy.c_str()));
  return S_OK;
}

HRESULT CPdibFilterDialog::CallLock(std::intptr_t, std::intptr_t, std::intptr_t) {
  if (window) {
    dataLocked = window->IsDataLocked();
  } else {
    dataLocked = !dataLocked;
    if (const auto page = hostPage) page->SetButtonState("ButtonLock", dataLocked);
  }
  if (dataLocked) {
    CollectParameter(nullptr);
  } else {
    Refresh();
  }
  return S_OK;
}

HRESULT CPdibFilterDialog::CallCheckDragDrop(std::intptr_t, std::intptr_t, std::intptr_t) {
  Notify("CheckDragDrop");
  return -2;
}

HRESULT CPdibFilterDialog::CallTop(std::intptr_t, std::intptr_t, std::intptr_t) {
  ApplyAndRefresh();
  return S_OK;
}

HRESULT CPdibFilterDialog::CallTopEnabled(std::intptr_t result, std::intptr_t, std::intptr_t) {
  return AnswerFlag(result, mixed);
}

HRESULT CPdibFilterDialog::CallTopDelete(std::intptr_t, std::intptr_t, std::intptr_t) {
  const KvString id = instanceId;
  const auto idArgument = AsArgument(static_cast<const char*>(id));
  if (const auto messages = hostMessages) messages->FindPage(kDispatcher, &pageId);
  Post(core::kMessageBracketBegin, modeValue, core::kBracketKind);
  Post(core::kMessageDelete1, idArgument);
  Post(core::kMessageDelete2, idArgument);
  Post(core::kMessageBracketEnd, modeValue, core::kBracketKind);
  Refresh();
  OnMovedAway();
  return S_OK;
}

HRESULT CPdibFilterDialog::CallLockUnlocked(std::intptr_t result, std::intptr_t, std::intptr_t) {
  return AnswerFlag(result, !dataLocked);
}

HRESULT CPdibFilterDialog::RunDrag(IDataObject* object, DWORD& effect) {
  effect = 0;
  if (const auto drag = ComPtr<IAnimHostDrag>::Query(hostRegistry.Get())) {
    return drag->Drag(object, this, kAllowedEffects, &effect);
  }
  if (!window || !window->Native()) return DRAGDROP_S_CANCEL;
  std::uint32_t end = 0;
  const auto result = window->Native()->Drag(object, this, kAllowedEffects, end);
  effect = end;
  return result == toolkit::DragEnd::Dropped ? DRAGDROP_S_DROP : DRAGDROP_S_CANCEL;
}

HRESULT CPdibFilterDialog::CallTopDrag(std::intptr_t, std::intptr_t, std::intptr_t) {
  if (window) window->TakeFocus();
  const auto object = ComPtr<IDataObject>::Attach(new CDataXferObj);
  const bool isFit = IsFitForIA(progId);
  lastText = WindowToParameter();
  isFit ? AddFilterDialogFitForIA(object.Get(), instanceId)
        : AddFilterDialog(object.Get(), instanceId);
  isFit ? AddFilterFitForIA(object.Get(), instanceId) : AddFilter(object.Get(), instanceId);
  AddFilterParameter(object.Get(), lastText.c_str());
  const auto idArgument = AsArgument(static_cast<const char*>(instanceId));
  PostToPage(kHistory, core::kMessageDragBegin, idArgument);
  DWORD effect = 0;
  const HRESULT end = RunDrag(object.Get(), effect);
  if (end == DRAGDROP_S_DROP && effect == DROPEFFECT_MOVE) {
    Refresh();
    OnMovedAway();
  }
  PostToPage(kHistory, core::kMessageDragEnd, idArgument);
  return S_OK;
}

HRESULT CPdibFilterDialog::CallMakeBubble(std::intptr_t a, std::intptr_t, std::intptr_t) {
  PostToPage(kGallery, core::kMessageMakeBubble, a);
  return S_OK;
}

HRESULT CPdibFilterDialog::CallShowBubble(std::intptr_t a, std::intptr_t, std::intptr_t) {
  PostToPage(kGallery, core::kMessageShowBubble, a);
  return S_OK;
}

HRESULT CPdibFilterDialog::CallHideBubble(std::intptr_t a, std::intptr_t, std::intptr_t) {
  PostToPage(kGallery, core::kMessageHideBubble, a);
  return S_OK;
}

HRESULT CPdibFilterDialog::CallClose(std::intptr_t, std::intptr_t, std::intptr_t) {
  Notify("ButtonClose");
  return S_OK;
}
