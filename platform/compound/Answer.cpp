#include "platform/compound/Answer.h"

#include <objbase.h>

#include <algorithm>

namespace platform::compound {

LPOLESTR GiveName(std::u16string_view name) {
  auto* const copy = static_cast<LPOLESTR>(CoTaskMemAlloc((name.size() + 1) * sizeof(OLECHAR)));
  if (!copy) throw std::bad_alloc();
  *std::copy(name.begin(), name.end(), copy) = 0;
  return copy;
}

STATSTG StatOf(const Entry& entry, DWORD mode, DWORD flags) {
  STATSTG stat = {};
  const bool isStream = entry.type == Type::Stream;
  stat.type = isStream ? STGTY_STREAM : STGTY_STORAGE;
  stat.cbSize.QuadPart = isStream ? entry.size : 0;
  stat.mtime = entry.modified;
  stat.ctime = entry.created;
  stat.grfMode = mode;
  stat.clsid = entry.classId;
  stat.grfStateBits = entry.stateBits;
  if (!(flags & STATFLAG_NONAME)) stat.pwcsName = GiveName(entry.name);
  return stat;
}

}  // namespace platform::compound
