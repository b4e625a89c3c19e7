// An enumerator of the system's kind over a list.
#pragma once

#include <algorithm>
#include <utility>
#include <vector>

#include "platform/component/ComObject.h"
#include "platform/component/Guard.h"

namespace platform {

// What the caller gets of a held item: a copy. Held items that have to be counted or turned into
// something else on their way out have a function of their own.
template <class Item>
void GiveCopy(const Item& held, Item& out) {
  out = held;
}

// Gives the items as they were when it was made. Belongs to one thread at a time.
template <class Interface, class Item, class Held = Item,
          void (*give)(const Held&, Item&) = &GiveCopy<Item>>
class ListEnumerator final
    : public ComObject<ListEnumerator<Interface, Item, Held, give>, Interface> {
 public:
  explicit ListEnumerator(std::vector<Held> list, std::size_t first = 0)
      : items(std::move(list)), next(first) {}

  // `fetched` may be null only for one item.
  HRESULT STDMETHODCALLTYPE Next(ULONG count, Item* out, ULONG* fetched) override {
    if (fetched) *fetched = 0;
    if (!out || (count != 1 && !fetched)) return E_POINTER;
    const ULONG given = Available(count);
    for (ULONG i = 0; i < given; ++i) give(items[next++], out[i]);
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

  std::vector<Held> items;
  std::size_t next;
};

}  // namespace platform
