#include "dialogs/Connections.h"

#include "platform/component/ListEnumerator.h"
#include "platform/component/SystemInterfaces.h"

namespace dialogs {
namespace {

using platform::ComPtr;

// A counted object and its cookie; `Give` hands one to the caller.
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
using List = platform::ListEnumerator<Interface, Item, Entry, &Give>;

}  // namespace

HRESULT ListConnectionPoint(IConnectionPoint* point, IEnumConnectionPoints** result) {
  if (!result) return E_POINTER;
  *result = nullptr;
  return platform::Guard([&] {
    std::vector<Entry> entries = {{ComPtr<IUnknown>(point), 0}};
    *result = new List<IEnumConnectionPoints, IConnectionPoint*>(std::move(entries));
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
    *result = new List<IEnumConnections, CONNECTDATA>(std::move(entries));
    return S_OK;
  });
}

}  // namespace dialogs
