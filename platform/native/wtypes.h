// Stand-in for the system header of the same name: scalar types, of the same size as there. Wide
// characters have two bytes on every system.
#pragma once

#include <guiddef.h>
#include <winerror.h>

#include <cstddef>
#include <cstdint>

using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using INT = int;
using UINT = unsigned int;
using BOOL = int;
using LONGLONG = std::int64_t;
using ULONGLONG = std::uint64_t;
using SIZE_T = std::size_t;
using LCID = std::uint32_t;
using WCHAR = char16_t;
using OLECHAR = WCHAR;
using LPOLESTR = OLECHAR*;
using LPCOLESTR = const OLECHAR*;
using LPVOID = void*;
using HMODULE = void*;
using HINSTANCE = HMODULE;
using HGLOBAL = void*;

union LARGE_INTEGER {
  struct {
    DWORD LowPart;
    LONG HighPart;
  } u;
  LONGLONG QuadPart;
};
union ULARGE_INTEGER {
  struct {
    DWORD LowPart;
    DWORD HighPart;
  } u;
  ULONGLONG QuadPart;
};

// 100-nanosecond steps since 1601.
struct FILETIME {
  DWORD dwLowDateTime;
  DWORD dwHighDateTime;
};

#ifndef TRUE
#define TRUE 1
#define FALSE 0
#endif

// On x86-64 there is one calling convention a system, so these say nothing to the compiler.
#define STDMETHODCALLTYPE
#define STDAPICALLTYPE
#define WINAPI
