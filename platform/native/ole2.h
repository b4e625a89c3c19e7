// Stand-in for the system header of the same name: bytes in global memory below a compound
// file, and what is transferred by clipboard and drag.
#pragma once

#include <objbase.h>
#include <oleidl.h>

extern "C" {

// Frees what the medium holds, by the object that it names or by its kind.
FXBOX_API void ReleaseStgMedium(STGMEDIUM* medium);

// The block is moveable, or null for a new one. With `freeAtEnd` it is freed with the object,
// otherwise it stays the caller's, who gets it, moved or not, by its handle. The size of the bytes
// is that of the block.
FXBOX_API HRESULT CreateILockBytesOnHGlobal(HGLOBAL block, BOOL freeAtEnd, ILockBytes** result);
// The block stays the object's. E_INVALIDARG when the bytes are not of that kind.
FXBOX_API HRESULT GetHGlobalFromILockBytes(ILockBytes* bytes, HGLOBAL* block);
}
