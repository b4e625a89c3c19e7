// Stand-in for the system header of the same name: scalar types, of the same size as there. Wide
// characters have two bytes on every system.
#pragma once

#include <guiddef.h>
#include <winerror.h>

#include <cstdint>

using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using INT = int;
using UINT = unsigned int;
using BOOL = int;
using ULONGLONG = std::uint64_t;
using LCID = std::uint32_t;
using WCHAR = char16_t;
using OLECHAR = WCHAR;
using LPOLESTR = OLECHAR*;
using LPCOLESTR = const OLECHAR*;
using LPVOID = void*;
using HMODULE = void*;
using HINSTANCE = HMODULE;

#ifndef TRUE
#define TRUE 1
#define FALSE 0
#endif

// On x86-64 there is one calling convention a system, so these say nothing to the compiler.
#define STDMETHODCALLTYPE
#define STDAPICALLTYPE
#define WINAPI
