// The id of an interface as a property of its type.
#pragma once

#include <unknwn.h>

#include "base/Guid.h"

namespace platform {

// The id by which QueryInterface knows `Interface`. Our interfaces carry theirs as `kIid`; the
// system's, which cannot, are named here and in platform/component/SystemInterfaces.h. An interface
// without an id does not compile.
template <class Interface>
constexpr const IID& IidOf() {
  return Interface::kIid;
}
template <>
inline const IID& IidOf<IUnknown>() {
  return IID_IUnknown;
}
template <>
inline const IID& IidOf<IClassFactory>() {
  return IID_IClassFactory;
}

}  // namespace platform
