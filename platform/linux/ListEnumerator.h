// An enumerator of the system's kind over a list of flat records.
#pragma once

#include <algorithm>
#include <utility>
#include <vector>

#include "platform/component/ComObject.h"
#include "platform/component/Guard.h"

namespace platform {

// Gives the items as they were when it was made. Belongs to one thread at a time.
template <class Interface, class Item>
class ListEnumerator final : public ComObject<ListEnumerator<Interface, Item>, Interface> {
 public:
  explicit ListEnumerator(std::vector<Item> list, std::size_t first = 0)
      : items(std::move(list)), next(first) {}

  HRESULT STDMETHODCALLTYPE Next(ULONG count, Item* out, ULONG* fetched) override {
    if (fetched) *fetched = 0;
    if (!out) return E_POINTER;
    const ULONG given = Available(count);
    std::copy_n(items.begin() + static_cast<std::ptrdiff_t>(next), given, out);
    next += given;
    if (fetched) *fetched = given;
    return given == count ? S_OK : S_FALSE;
  }

  HRESULT STDMETHODCALLTYPE Skip(ULONG count) override {
    const ULONG skipped = Available(count);
    next += skipped;
    return skipped == count ? S_OK : S_FALSE;
  }

  HRESULT STDMETHODCALLTYPE Reset() override {
    next = 0;
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE Clone(Interface** result) override {
    if (!result) return E_POINTER;
    *result = nullptr;
    return Guard([&] {
      *result = new ListEnumerator(items, next);
      return S_OK;
    });
  }

 private:
  ULONG Available(ULONG count) const {
    return static_cast<ULONG>(std::min<std::size_t>(count, items.size() - next));
  }

  std::vector<Item> items;
  std::size_t next;
};

}  // namespace platform
