// The elements of a storage, one after the other.
#pragma once

#include <objidl.h>

#include <vector>

#include "platform/component/ComObject.h"
#include "platform/component/SystemInterfaces.h"
#include "platform/compound/Format.h"

namespace platform::compound {

// Gives the elements as they were when it was made. Belongs to one thread at a time.
class ElementEnumerator final : public ComObject<ElementEnumerator, IEnumSTATSTG> {
 public:
  explicit ElementEnumerator(std::vector<Entry> list, std::size_t first = 0)
      : entries(std::move(list)), next(first) {}

  HRESULT STDMETHODCALLTYPE Next(ULONG count, STATSTG* elements, ULONG* fetched) override;
  HRESULT STDMETHODCALLTYPE Skip(ULONG count) override;
  HRESULT STDMETHODCALLTYPE Reset() override;
  HRESULT STDMETHODCALLTYPE Clone(IEnumSTATSTG** result) override;

 private:
  friend class ComObject<ElementEnumerator, IEnumSTATSTG>;
  ~ElementEnumerator() = default;

  const std::vector<Entry> entries;
  std::size_t next;
};

}  // namespace platform::compound
