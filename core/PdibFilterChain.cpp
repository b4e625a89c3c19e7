#include "core/PdibFilterChain.h"

#include <cstring>
#include <string>

#include "core/Diagnostics.h"
#include "core/GrowingText.h"
#include "platform/Services.h"
#include "platform/component/Guard.h"

namespace {

using platform::ComPtr;

constexpr int kNameBytes = 200;  // to begin with
constexpr std::size_t kLongText = 1024;
constexpr int kDefaultOrder = 5000;

constexpr char kUnhandled[] = "FilterChain: Unhandled exception in %s(%d)";
constexpr char kOccurred[] = "Exception occoured in %s (%d)";

std::string NameOf(IAnimFilter* filter) {
  return core::GrowingText([&](char* buffer, int size) { return filter->GetName(buffer, size); },
                           kNameBytes);
}

bool HasName(IAnimFilter* filter, const char* name) {
  return NameOf(filter) == name;
}

std::string ParametersOf(IAnimFilterParameter& filter, bool active) {
  return core::GrowingText([&](char* buffer, int size) {
    return active ? filter.GetActiveParameter(buffer, size) : filter.GetParameter(buffer, size);
  });
}

bool HasParameters(IAnimFilter* filter, const std::string& parameters) {
  const auto access = ComPtr<IAnimFilterParameter>::Query(filter);
  return parameters == (access ? ParametersOf(*access.Get(), false) : std::string());
}

void GiveParameters(IAnimFilter* filter, const std::string& parameters) {
  if (auto access = ComPtr<IAnimFilterParameter>::Query(filter)) {
    access->SetParameter(parameters.c_str(), 1);
  }
}

int OrderOf(IAnimFilter* filter) {
  int order = kDefaultOrder;
  filter->GetOrder(&order);
  return order;
}

ComPtr<IAnimFilter> MakeFilter(IAnimFilterCreator* creator, const std::string& name) {
  ComPtr<IAnimFilter> filter;
  if (creator) creator->CreateFilter(name.c_str(), IAnimFilter::kIid, filter.PutVoid());
  return filter;
}

void LogException(const char* format, int line) {
  try {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    core::LogLine(-1, format, "PdibFilterChain.cpp", line);
#pragma GCC diagnostic pop
  } catch (...) {
    core::LogLine(0, "Exception in logging %d,%s", line, "PdibFilterChain.cpp");
  }
}

// Runs an operation that changes the chain. What a host's filter throws is logged and passed on.
template <class Body>
HRESULT Guarded(const char* format, int line, Body&& body) {
  try {
    return body();
  } catch (...) {
    LogException(format, line);
    throw;
  }
}

}  // namespace

// Tells the destination about a change for as long as it lives. An operation that runs inside
// another finds the flag cleared by the inner one; the host sees as many locks as unlocks or more.
class CPdibFilterChain::Locked {
 public:
  explicit Locked(CPdibFilterChain& locking) : chain(locking) { chain.ChainLock(); }
  ~Locked() { chain.ChainUnlock(); }
  Locked(const Locked&) = delete;
  Locked& operator=(const Locked&) = delete;

 private:
  CPdibFilterChain& chain;
};

CPdibFilterChain::~CPdibFilterChain() {
  try {
    RemoveAll();
  } catch (...) {
    // Logged already; the ends are released all the same.
  }
}

void CPdibFilterChain::ChainLock() {
  locked = static_cast<bool>(destination);
  if (destination) destination->Lock();
}

void CPdibFilterChain::ChainUnlock() {
  if (!destination || !locked) return;
  locked = false;
  try {
    destination->Unlock();
  } catch (...) {
    // The change itself has succeeded, or its own failure is under way.
    LogException(kUnhandled, __LINE__);
  }
}

// --- walking

IAnimFilter* CPdibFilterChain::GoFirst() {
  return current = first.Get();
}

IAnimFilter* CPdibFilterChain::GoNext() {
  ComPtr<IAnimFilter> next;
  if (current) current->GetDestination(IAnimFilter::kIid, next.PutVoid());
  return current = next.Get();
}

IAnimFilter* CPdibFilterChain::GoPrevious() {
  ComPtr<IAnimFilter> previous;
  if (current) current->GetSource(IAnimFilter::kIid, previous.PutVoid());
  return current = previous.Get();
}

IAnimFilter* CPdibFilterChain::FindAt(int index, int& count) {
  count = 0;
  IAnimFilter* last = nullptr;
  for (IAnimFilter* at = GoFirst(); at; at = GoNext()) {
    if (count == index) return at;
    last = at;
    ++count;
  }
  current = index < 0 ? last : nullptr;
  return current;
}

IAnimFilter* CPdibFilterChain::GoLast() {
  int count = 0;
  return FindAt(-1, count);
}

IAnimFilter* CPdibFilterChain::FindNamed(const char* name) {
  IAnimFilter* at = GoFirst();
  while (at && !HasName(at, name)) at = GoNext();
  return at;
}

bool CPdibFilterChain::Holds(IUnknown* filter) {
  const auto wanted = ComPtr<IUnknown>::Query(filter);
  if (!wanted) return false;
  for (IAnimFilter* at = GoFirst(); at; at = GoNext()) {
    if (wanted == ComPtr<IUnknown>::Query(at).Get()) return true;
  }
  return false;
}

// --- linking

void CPdibFilterChain::LinkEnds() {
  if (first || !source || !destination) return;
  destination->AttachSource(source.Get());
  source->AttachDestination(destination.Get());
}

void CPdibFilterChain::InsertFirst(IAnimFilter* filter) {
  if (source) filter->SetSource(source.Get());
  if (first) {
    filter->SetDestination(first.Get());
  } else if (destination) {
    filter->SetDestination(destination.Get());
  }
  first = ComPtr<IAnimFilter>(filter);
}

void CPdibFilterChain::InsertBehindCursor(IAnimFilter* filter) {
  IAnimFilter* const before = current;
  const ComPtr<IAnimFilter> next(GoNext());
  before->SetDestination(filter);
  if (next) {
    next->SetSource(filter);
  } else if (destination) {
    filter->SetDestination(destination.Get());
  }
}

void CPdibFilterChain::InsertLast(IAnimFilter* filter) {
  GoLast() ? InsertBehindCursor(filter) : InsertFirst(filter);
}

void CPdibFilterChain::InsertBeforeCursor(IAnimFilter* filter) {
  if (!first || first == current || !GoPrevious()) {
    InsertFirst(filter);
  } else {
    InsertBehindCursor(filter);
  }
}

void CPdibFilterChain::InsertByOrder(IAnimFilter* filter) {
  const int order = OrderOf(filter);
  IAnimFilter* at = GoFirst();
  while (at && OrderOf(at) <= order) at = GoNext();
  at ? InsertBeforeCursor(filter) : InsertLast(filter);
}

IAnimFilter* CPdibFilterChain::RemoveCursor() {
  const ComPtr<IAnimFilter> removed(current);
  if (!removed) return nullptr;
  const ComPtr<IAnimFilter> previous(GoPrevious());
  current = removed.Get();
  const ComPtr<IAnimFilter> next(GoNext());
  if (!(first == removed.Get())) {
    if (next) next->SetSource(previous.Get());
  } else {
    first = next;
    if (next) next->SetSource(source.Get());
  }
  removed->SetSource(nullptr);
  removed->SetDestination(nullptr);
  // Without a destination the last filter must not keep pointing at the one that is gone.
  if (!next && previous) previous->SetDestination(destination.Get());
  LinkEnds();
  return current = next.Get();
}

void CPdibFilterChain::RemoveFrom(IAnimFilter* filter) {
  current = filter;
  while (current) RemoveCursor();
}

// --- IAnimFilterChain

HRESULT CPdibFilterChain::SetSource(IUnknown* newSource) {
  const Locked lock(*this);
  return Guarded(kUnhandled, __LINE__, [&] {
    if (Holds(newSource)) return E_INVALIDARG;
    source = ComPtr<IAnimFilterDestCallsThis>::Query(newSource);
    if (first) first->SetSource(source.Get());
    LinkEnds();
    return S_OK;
  });
}

HRESULT CPdibFilterChain::SetDestination(IUnknown* newDestination) {
  return Guarded(kUnhandled, __LINE__, [&] {
    // One of its own filters at an end would close the run to a ring.
    if (Holds(newDestination)) return E_INVALIDARG;
    destination = ComPtr<IAnimFilterSrcCallsThis>::Query(newDestination);
    if (IAnimFilter* last = GoLast()) last->SetDestination(destination.Get());
    LinkEnds();
    return S_OK;
  });
}

HRESULT CPdibFilterChain::GetCount(int* count) {
  if (!count) return E_POINTER;
  return platform::Guard([&] {
    FindAt(-1, *count);
    return S_OK;
  });
}

HRESULT CPdibFilterChain::GetAt(int index, REFIID iid, void** result) {
  if (!result) return E_POINTER;
  *result = nullptr;
  return platform::Guard([&] {
    int count = 0;
    IAnimFilter* const found = FindAt(index, count);
    return found ? found->QueryInterface(iid, result) : E_FAIL;
  });
}

HRESULT CPdibFilterChain::FindByName(const char* name, REFIID iid, void** result) {
  if (!name || !result) return E_POINTER;
  return platform::Guard([&]() -> HRESULT {
    IAnimFilter* const found = FindNamed(name);
    return found ? found->QueryInterface(iid, result) : 1;
  });
}

HRESULT CPdibFilterChain::Accept(IUnknown* filter, ComPtr<IAnimFilter>& accepted) {
  const HRESULT status = filter->QueryInterface(IAnimFilter::kIid, accepted.PutVoid());
  if (!accepted) return FAILED(status) ? status : E_NOINTERFACE;
  // A filter that stands in the chain already would close its links to a ring.
  return Holds(filter) ? E_INVALIDARG : S_OK;
}

HRESULT CPdibFilterChain::Insert(IUnknown* filter) {
  if (!filter) return E_FAIL;
  const Locked lock(*this);
  return Guarded(kUnhandled, __LINE__, [&]() -> HRESULT {
    ComPtr<IAnimFilter> added;
    const HRESULT status = Accept(filter, added);
    if (SUCCEEDED(status)) InsertByOrder(added.Get());
    return status;
  });
}

HRESULT CPdibFilterChain::InsertAt(int index, IUnknown* filter) {
  if (!filter) return E_FAIL;
  const Locked lock(*this);
  return Guarded(kUnhandled, __LINE__, [&]() -> HRESULT {
    ComPtr<IAnimFilter> added;
    const HRESULT status = Accept(filter, added);
    if (FAILED(status)) return status;
    int count = 0;
    if (index == 0 || !first) {
      InsertFirst(added.Get());
    } else if (index > 0 && FindAt(index - 1, count)) {
      InsertBehindCursor(added.Get());
    } else {
      InsertLast(added.Get());
    }
    return S_OK;
  });
}

HRESULT CPdibFilterChain::RemoveAll() {
  const Locked lock(*this);
  return Guarded(kUnhandled, __LINE__, [&] {
    RemoveFrom(GoFirst());
    LinkEnds();
    return S_OK;
  });
}

HRESULT CPdibFilterChain::RemoveAt(int index) {
  const Locked lock(*this);
  return Guarded(kUnhandled, __LINE__, [&] {
    int count = 0;
    if (index < 0 || !FindAt(index, count)) return E_FAIL;
    RemoveCursor();
    return S_OK;
  });
}

HRESULT CPdibFilterChain::RemoveByNameLocked(const char* name) {
  const Locked lock(*this);
  return Guarded(kOccurred, __LINE__, [&] { return RemoveByName(name); });
}

HRESULT CPdibFilterChain::RemoveByName(const char* name) {
  if (!name) return E_POINTER;
  return Guarded(kUnhandled, __LINE__, [&] {
    GoFirst();
    while (current) {
      if (HasName(current, name)) {
        RemoveCursor();
      } else {
        GoNext();
      }
    }
    return S_OK;
  });
}

HRESULT CPdibFilterChain::TouchChain(std::intptr_t, std::intptr_t) {
  const Locked lock(*this);
  return S_OK;
}

HRESULT CPdibFilterChain::CheckArgument(std::intptr_t argument) {
  return static_cast<HRESULT>(argument);
}

// --- chain text

HRESULT CPdibFilterChain::GetChainText(char* buffer, int size, const char* open, const char* close,
                                       bool active) {
  if (!buffer || !open || !close) return E_POINTER;
  return platform::Guard([&]() -> HRESULT {
    std::string text;
    for (IAnimFilter* at = GoFirst(); at; at = GoNext()) {
      const auto access = ComPtr<IAnimFilterParameter>::Query(at);
      if (!access) continue;
      text.append(NameOf(at)).append(open);
      text.append(ParametersOf(*access.Get(), active)).append(close);
    }
    if (size < 0 || text.size() >= static_cast<std::size_t>(size)) return E_FAIL;
    std::memcpy(buffer, text.c_str(), text.size() + 1);
    return S_OK;
  });
}

HRESULT CPdibFilterChain::SetChainTextLocked(const char* text, const char* open, const char* close,
                                             IAnimFilterCreator* creator) {
  const Locked lock(*this);
  return Guarded(kOccurred, __LINE__, [&] { return SetChainText(text, open, close, creator); });
}

HRESULT CPdibFilterChain::SetChainText(const char* text, const char* open, const char* close,
                                       IAnimFilterCreator* creator) {
  return Guarded(kUnhandled, __LINE__, [&] {
    // A host that serves both ends gives itself as source alone.
    if (source && !destination) SetDestination(source.Get());
    const std::vector<ChainTextItem> items = SplitChainText(text, open, close);
    int position = 0;
    for (const ChainTextItem& item : items) Apply(Decide(position++, item), item, creator);
    int count = 0;
    RemoveFrom(FindAt(position, count));
    LinkEnds();
    return S_OK;
  });
}

// Compares one item with the filter at its position and leaves the cursor where Apply needs it: on
// the filter to change or drop, or on the one before which a new filter goes.
CPdibFilterChain::Step CPdibFilterChain::Decide(int position, const ChainTextItem& item) {
  int count = 0;
  IAnimFilter* here = FindAt(position, count);
  // Behind the end, an equally named filter anywhere in the chain serves.
  if (!here) here = FindNamed(item.name.c_str());
  if (!here) return Step::Append;
  if (HasName(here, item.name.c_str())) {
    if (item.parameters.size() > kLongText) platform::CurrentServices().desktop->Beep(2000, 100);
    return HasParameters(here, item.parameters) ? Step::Same : Step::Update;
  }
  IAnimFilter* const next = GoNext();
  const bool nextIsMeant =
      next && HasName(next, item.name.c_str()) && HasParameters(next, item.parameters);
  current = here;
  return nextIsMeant ? Step::Drop : Step::Create;
}

void CPdibFilterChain::Apply(Step step, const ChainTextItem& item, IAnimFilterCreator* creator) {
  if (step == Step::Same) return;
  if (step == Step::Update) return GiveParameters(current, item.parameters);
  if (step == Step::Drop) return static_cast<void>(RemoveCursor());
  const auto made = MakeFilter(creator, item.name);
  if (!made) return;
  GiveParameters(made.Get(), item.parameters);
  step == Step::Append ? InsertLast(made.Get()) : InsertBeforeCursor(made.Get());
}

HRESULT CPdibFilterChain::UpdateChain(const char* text, const char* open, const char* close,
                                      IAnimFilterCreator* creator) {
  if (!text || !open || !close || !creator || !*text || !*open || !*close) return S_OK;
  return Guarded(kUnhandled, __LINE__, [&]() -> HRESULT {
    bool anyFailed = false;
    std::string rest = text;
    const std::size_t openBytes = std::strlen(open);
    const std::size_t closeBytes = std::strlen(close);
    for (;;) {
      const std::size_t nameEnd = rest.find(open);
      if (nameEnd == std::string::npos || nameEnd == 0) break;
      const std::size_t parametersAt = nameEnd + openBytes;
      const std::size_t end = rest.find(close, parametersAt);
      if (end == std::string::npos) break;
      const ChainTextItem item{rest.substr(0, nameEnd),
                               rest.substr(parametersAt, end - parametersAt)};
      rest.erase(0, end + closeBytes);
      if (FAILED(UpdateItem(item, creator))) anyFailed = true;
    }
    return anyFailed ? 1 : 0;
  });
}

HRESULT CPdibFilterChain::UpdateItem(const ChainTextItem& item, IAnimFilterCreator* creator) {
  ComPtr<IAnimFilterParameter> access;
  const HRESULT found = FindByName(item.name.c_str(), IAnimFilterParameter::kIid, access.PutVoid());
  if (access) {
    const Locked lock(*this);
    return access->SetParameter(item.parameters.c_str(), 1);
  }
  if (FAILED(found)) return found;
  const auto made = MakeFilter(creator, item.name);
  if (!made) return E_FAIL;
  const HRESULT inserted = Insert(made.Get());
  if (FAILED(inserted)) return inserted;
  access = ComPtr<IAnimFilterParameter>::Query(made.Get());
  return access ? access->SetParameter(item.parameters.c_str(), 1) : E_NOINTERFACE;
}
