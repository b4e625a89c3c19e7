#include "platform/compound/ElementEnumerator.h"

#include <algorithm>

#include "platform/compound/Answer.h"

namespace platform::compound {

HRESULT ElementEnumerator::Next(ULONG count, STATSTG* elements, ULONG* fetched) {
  if (fetched) *fetched = 0;
  if (!elements) return STG_E_INVALIDPOINTER;
  if (!fetched && count != 1) return STG_E_INVALIDPARAMETER;
  ULONG given = 0;
  const HRESULT status = Answer([&] {
    for (; given < count && next < entries.size(); ++given, ++next) {
      elements[given] = StatOf(entries[next], 0, STATFLAG_DEFAULT);
    }
  });
  if (fetched) *fetched = given;
  if (FAILED(status) && given == 0) return status;
  return given == count ? S_OK : S_FALSE;
}

HRESULT ElementEnumerator::Skip(ULONG count) {
  const std::size_t skipped = std::min<std::size_t>(count, entries.size() - next);
  next += skipped;
  return skipped == count ? S_OK : S_FALSE;
}

HRESULT ElementEnumerator::Reset() {
  next = 0;
  return S_OK;
}

HRESULT ElementEnumerator::Clone(IEnumSTATSTG** result) {
  return Give(result, [&] { return new ElementEnumerator(entries, next); });
}

}  // namespace platform::compound
