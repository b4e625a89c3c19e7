// Stand-in for the system header of the same name: global memory and the last error of a thread.
#pragma once

#include <wtypes.h>

#include "base/Export.h"

inline constexpr UINT GMEM_FIXED = 0;
inline constexpr UINT GMEM_MOVEABLE = 2;
inline constexpr UINT GMEM_ZEROINIT = 0x40;
inline constexpr UINT GMEM_MODIFY = 0x80;
inline constexpr UINT GMEM_INVALID_HANDLE = 0x8000;
inline constexpr UINT GHND = GMEM_MOVEABLE | GMEM_ZEROINIT;
inline constexpr UINT GPTR = GMEM_FIXED | GMEM_ZEROINIT;

extern "C" {

// A block that is not moveable is its own handle. A moveable one is reached by GlobalLock, which
// counts, and keeps its handle when GlobalReAlloc moves it. Null on failure; the block that was to
// be changed is then as it was. Any thread, but a block belongs to one at a time.
FXBOX_API HGLOBAL GlobalAlloc(UINT flags, SIZE_T size);
FXBOX_API HGLOBAL GlobalReAlloc(HGLOBAL block, SIZE_T size, UINT flags);
FXBOX_API void* GlobalLock(HGLOBAL block);
// FALSE when the block is not locked any more, also when it never was.
FXBOX_API BOOL GlobalUnlock(HGLOBAL block);
// The size that was asked for; 0 for null.
FXBOX_API SIZE_T GlobalSize(HGLOBAL block);
// The count of locks in the low byte.
FXBOX_API UINT GlobalFlags(HGLOBAL block);
// The handle of the block that this pointer was had from by GlobalLock.
FXBOX_API HGLOBAL GlobalHandle(const void* pointer);
// Null when done. A locked block is freed as well.
FXBOX_API HGLOBAL GlobalFree(HGLOBAL block);

// One number for each thread, 0 at its start. The functions above do not change it.
FXBOX_API DWORD GetLastError();
FXBOX_API void SetLastError(DWORD error);
}
