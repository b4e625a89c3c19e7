#include "dialogs/Connections.h"

#include <algorithm>

#include "platform/component/ComObject.h"
#include "platform/component/Guard.h"
#include "platform/component/SystemInterfaces.h"

namespace dialogs {
namespace {

using platform::ComPtr;

// What a list holds is a pair of a counted object and its cookie; `Give` writes one to the caller.
struct Entry {
  ComPtr<IUnknown> object;
  DWORD cookie;
};

void Give(const Entry& entry, IConnectionPoint*& result) {
  result = ComPtr<IConnectionPoint>::Query(entry.object.Get()).Detach();
}

void Give(const Entry& entry, CONNECTDATA& result) {
  result = {ComPtr<IUnknown>(entry.object).Detach(), entry.cookie};
}

template <class Interface, class Item>
class List final : public platform::ComObject<List<Interface, Item>, Interface> {
 public:
  List(std::vector<Entry> listed, std::size_t start) : entries(std::move(listed)), next(start) {}

  HRESULT STDMETHODCALLTYPE Next(ULONG count, Item* items, ULONG* fetched) override {
    if (!items || (count != 1 && !fetched)) return E_POINTER;
    ULONG given = 0;
    while (given < count && next < entries.size()) Give(entries[next++], items[given++]);
    if (fetched) *fetched = given;
    return given == count ? S_OK : S_FALSE;
  }
  HRESULT STDMETHODCALLTYPE Skip(ULONG count) override {
    const std::size_t left = entries.size() - next;
    next += std::min<std::size_t>(count, left);
    return count <= left ? S_OK : S_FALSE;
  }
  HRESULT STDMETHODCALLTYPE Reset() override {
    next = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Clone(Interface** result) override {
    if (!result) return E_POINTER;
    *result = nullptr;
    return platform::Guard([&] {
      *result = new List(entries, next);
      return S_OK;
    });
  }

 private:
  std::vector<Entry> entries;
  std::size_t next;
};

}  // namespace

HRESULT ListConnectionPoint(IConnectionPoint* point, IEnumConnectionPoints** result) {
  if (!result) return E_POINTER;
  *result = nullptr;
  return platform::Guard([&] {
    std::vector<Entry> entries = {{ComPtr<IUnknown>(point), 0}};
    *result = new List<IEnumConnectionPoints, IConnectionPoint*>(std::move(entries), 0);
    return S_OK;
  });
}

HRESULT ListConnections(const std::vector<ComPtr<IUnknown>>& sinks, IEnumConnections** result) {
  if (!result) return E_POINTER;
  *result = nullptr;
  return platform::Guard([&] {
    std::vector<Entry> entries;
    for (std::size_t i = 0; i < sinks.size(); ++i) {
      if (sinks[i]) entries.push_back({sinks[i], static_cast<DWORD>(i + 1)});
    }
    *result = new List<IEnumConnections, CONNECTDATA>(std::move(entries), 0);
    return S_OK;
  });
}

}  // namespace dialogs
