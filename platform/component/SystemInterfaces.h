// The ids of the system's category and storage interfaces as properties of their types.
#pragma once

#include <comcat.h>
#include <objidl.h>

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
template <>
inline const IID& IidOf<ISequentialStream>() {
  return IID_ISequentialStream;
}
template <>
inline const IID& IidOf<IStream>() {
  return IID_IStream;
}
template <>
inline const IID& IidOf<ILockBytes>() {
  return IID_ILockBytes;
}
template <>
inline const IID& IidOf<IStorage>() {
  return IID_IStorage;
}
template <>
inline const IID& IidOf<IEnumSTATSTG>() {
  return IID_IEnumSTATSTG;
}

}  // namespace platform
