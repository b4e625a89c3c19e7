// The ids of the system's category and storage interfaces as properties of their types.
#pragma once

#include <comcat.h>
#include <objidl.h>
#include <ocidl.h>
#include <oleidl.h>

#include "platform/component/InterfaceId.h"

// What platform/component/InterfaceId.h says of our own interfaces, for these. Include it where a
// ComPtr or a ComObject names one of them; without it they have no id and do not compile.
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
template <>
inline const IID& IidOf<IDataObject>() {
  return IID_IDataObject;
}
template <>
inline const IID& IidOf<IEnumFORMATETC>() {
  return IID_IEnumFORMATETC;
}
template <>
inline const IID& IidOf<IDropSource>() {
  return IID_IDropSource;
}
template <>
inline const IID& IidOf<IConnectionPointContainer>() {
  return IID_IConnectionPointContainer;
}
template <>
inline const IID& IidOf<IConnectionPoint>() {
  return IID_IConnectionPoint;
}
template <>
inline const IID& IidOf<IEnumConnectionPoints>() {
  return IID_IEnumConnectionPoints;
}
template <>
inline const IID& IidOf<IEnumConnections>() {
  return IID_IEnumConnections;
}

}  // namespace platform
