// Stand-in for the system header of the same name: the component runtime. Classes are found among
// those of the modules that announced themselves (see platform/linux/ComponentRuntime.h) and,
// behind them, among the registered ones: the key CLSID\{id}\InProcServer32 below HKEY_CLASSES_ROOT
// of the registry service names a shared object that exports DllGetClassObject. All functions may
// be called from any thread.
#pragma once

#include <objidl.h>
#include <unknwn.h>
#include <winbase.h>

#include "base/Export.h"

inline constexpr DWORD CLSCTX_INPROC_SERVER = 1;
inline constexpr DWORD COINIT_APARTMENTTHREADED = 2;

extern "C" {

// Nothing has to be set up here; S_OK, and S_FALSE from the second call of a thread on.
FXBOX_API HRESULT CoInitialize(void* reserved);
FXBOX_API void CoUninitialize();
FXBOX_API HRESULT OleInitialize(void* reserved);
FXBOX_API void OleUninitialize();

// REGDB_E_CLASSNOTREG for an unknown class, CO_E_DLLNOTFOUND or CO_E_ERRORINDLL for a module that
// does not load or lacks the exported function. *result is null on failure.
FXBOX_API HRESULT CoGetClassObject(REFCLSID classId, DWORD context, void* reserved, REFIID iid,
                                   void** result);
FXBOX_API HRESULT CoCreateInstance(REFCLSID classId, IUnknown* outer, DWORD context, REFIID iid,
                                   void** result);
// Unloads the registered modules that say they can go.
FXBOX_API void CoFreeUnusedLibraries();

// Texts given out are freed with CoTaskMemFree by the caller.
FXBOX_API HRESULT ProgIDFromCLSID(REFCLSID classId, LPOLESTR* progId);
FXBOX_API HRESULT CLSIDFromProgID(LPCOLESTR progId, CLSID* classId);
FXBOX_API HRESULT StringFromCLSID(REFCLSID classId, LPOLESTR* text);
FXBOX_API HRESULT CLSIDFromString(LPCOLESTR text, CLSID* classId);
// Returns the number of characters with the terminator, 0 when `size` is too small.
FXBOX_API int StringFromGUID2(REFGUID id, LPOLESTR text, int size);

FXBOX_API void* CoTaskMemAlloc(std::size_t size);
FXBOX_API void CoTaskMemFree(void* block);

// Compound files. Versions 3 and 4 are read, new files have version 3; no times are written. Flags
// and codes are the system's, without transactions. In a path a backslash separates like a slash;
// names are UTF-8 on the disk. A root is opened exclusively, or for reading with
// STGM_SHARE_DENY_WRITE or STGM_PRIORITY; elements always exclusively. Whoever opens a file that
// another has gets STG_E_SHAREVIOLATION or STG_E_LOCKVIOLATION, in this process as from another
// one; a lock ends with its process. A file of another kind, also an empty one, is
// STG_E_FILEALREADYEXISTS and is never overwritten.
//
// What was written to a stream is on the disk after its last release, its Commit, or the Commit of
// the root; until then, and however the process ends, the file holds what the stream held before. A
// write that fails leaves the whole stream as it was. What was destroyed, renamed or made besides
// goes to the disk with the next stream, and with the Commit or the release of a storage.
//
// A file with a fault is read as far as it is whole: a read that reaches the fault is short, one
// behind it fails with STG_E_DOCFILECORRUPT and leaves zeros. Such a file cannot be written to.
//
// A storage and all that was opened from it belong to one thread at a time. The release of a
// storage ends what was opened from it (STG_E_REVERTED); what was written counts.
FXBOX_API HRESULT StgCreateDocfile(const OLECHAR* path, DWORD mode, DWORD reserved,
                                   IStorage** result);
FXBOX_API HRESULT StgOpenStorage(const OLECHAR* path, IStorage* priority, DWORD mode, SNB exclude,
                                 DWORD reserved, IStorage** result);
FXBOX_API HRESULT StgIsStorageFile(const OLECHAR* path);

// The same over bytes of the caller's, which are held while the storage is open.
FXBOX_API HRESULT StgCreateDocfileOnILockBytes(ILockBytes* bytes, DWORD mode, DWORD reserved,
                                               IStorage** result);
FXBOX_API HRESULT StgOpenStorageOnILockBytes(ILockBytes* bytes, IStorage* priority, DWORD mode,
                                             SNB exclude, DWORD reserved, IStorage** result);
FXBOX_API HRESULT StgIsStorageILockBytes(ILockBytes* bytes);
}
