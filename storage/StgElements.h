// What the storages over compound files share: flags, codes, enumeration and streams.
#pragma once

#include <objbase.h>

#include <string>

#include "platform/component/ComPtr.h"
#include "storage/CheckedStream.h"

namespace stg {

// The system's flags for our mode; every element is opened exclusively.
DWORD FlagsOf(unsigned mode);
// The same for an open, to which the create bit is never passed.
inline DWORD OpenFlagsOf(unsigned mode) {
  return FlagsOf(mode & ~static_cast<unsigned>(OpenModeCreate));
}

// Somebody else holds the element.
bool IsHeld(HRESULT status);
// There is no such element.
bool IsAbsent(HRESULT status);

using WideName = std::basic_string<OLECHAR>;
WideName WideNameOf(const char* name);
WideName WidePathOf(const char* path);

// What lies between the elements of a storage, one after the other.
class Enumeration {
 public:
  // Begins anew; false without an element.
  bool First(IStorage* storage, KvString& name, unsigned& attributes);
  bool Next(KvString& name, unsigned& attributes);

 private:
  bool Deliver(KvString& name, unsigned& attributes);

  platform::ComPtr<IEnumSTATSTG> elements;
};

// A stream of a compound file; owns the element. Null where there is no element.
IKvStream* WrapStream(IStream* owned);

}  // namespace stg
