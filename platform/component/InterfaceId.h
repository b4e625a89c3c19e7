// The id of an interface as a property of its type.
#pragma once

#include <unknwn.h>

#include "base/Guid.h"

namespace platform {

// Our interfaces carry their id as `kIid`; the system's are named here.
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
