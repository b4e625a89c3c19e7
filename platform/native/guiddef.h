// Stand-in for the system header of the same name: ids.
#pragma once

#include <cstdint>
#include <cstring>

struct GUID {
  std::uint32_t Data1;
  std::uint16_t Data2;
  std::uint16_t Data3;
  std::uint8_t Data4[8];
};

using IID = GUID;
using CLSID = GUID;
using CATID = GUID;
using REFGUID = const GUID&;
using REFIID = const IID&;
using REFCLSID = const CLSID&;
using REFCATID = const CATID&;

inline bool IsEqualGUID(REFGUID a, REFGUID b) {
  return std::memcmp(&a, &b, sizeof(GUID)) == 0;
}
inline bool IsEqualIID(REFIID a, REFIID b) {
  return IsEqualGUID(a, b);
}
inline bool IsEqualCLSID(REFCLSID a, REFCLSID b) {
  return IsEqualGUID(a, b);
}
inline bool operator==(REFGUID a, REFGUID b) {
  return IsEqualGUID(a, b);
}
inline bool operator!=(REFGUID a, REFGUID b) {
  return !IsEqualGUID(a, b);
}
