// The ids of the system's category interfaces as properties of their types.
#pragma once

#include <comcat.h>

#include "platform/component/InterfaceId.h"

namespace platform {

template <>
inline const IID& IidOf<ICatInformation>() {
  return IID_ICatInformation;
}
template <>
inline const IID& IidOf<ICatRegister>() {
  return IID_ICatRegister;
}
template <>
inline const IID& IidOf<IEnumGUID>() {
  return IID_IEnumGUID;
}
template <>
inline const IID& IidOf<IEnumCATEGORYINFO>() {
  return IID_IEnumCATEGORYINFO;
}

}  // namespace platform
