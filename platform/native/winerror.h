// Stand-in for the system header of the same name: status codes.
#pragma once

#include <cstdint>

using HRESULT = std::int32_t;
using SCODE = std::int32_t;

constexpr bool SUCCEEDED(HRESULT status) {
  return status >= 0;
}
constexpr bool FAILED(HRESULT status) {
  return status < 0;
}

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_NOTIMPL = static_cast<HRESULT>(0x80004001u);
inline constexpr HRESULT E_NOINTERFACE = static_cast<HRESULT>(0x80004002u);
inline constexpr HRESULT E_POINTER = static_cast<HRESULT>(0x80004003u);
inline constexpr HRESULT E_ABORT = static_cast<HRESULT>(0x80004004u);
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005u);
inline constexpr HRESULT E_UNEXPECTED = static_cast<HRESULT>(0x8000FFFFu);
inline constexpr HRESULT E_ACCESSDENIED = static_cast<HRESULT>(0x80070005u);
inline constexpr HRESULT E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000Eu);
inline constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057u);
inline constexpr HRESULT CLASS_E_NOAGGREGATION = static_cast<HRESULT>(0x80040110u);
inline constexpr HRESULT CLASS_E_CLASSNOTAVAILABLE = static_cast<HRESULT>(0x80040111u);
inline constexpr HRESULT REGDB_E_CLASSNOTREG = static_cast<HRESULT>(0x80040154u);
inline constexpr HRESULT CAT_E_CATIDNOEXIST = static_cast<HRESULT>(0x80040160u);
inline constexpr HRESULT CAT_E_NODESCRIPTION = static_cast<HRESULT>(0x80040161u);
inline constexpr HRESULT CO_E_CLASSSTRING = static_cast<HRESULT>(0x800401F3u);
inline constexpr HRESULT CO_E_DLLNOTFOUND = static_cast<HRESULT>(0x800401F8u);
inline constexpr HRESULT CO_E_ERRORINDLL = static_cast<HRESULT>(0x800401F9u);
inline constexpr HRESULT SELFREG_E_CLASS = static_cast<HRESULT>(0x80040201u);
