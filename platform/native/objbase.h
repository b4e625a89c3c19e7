// Stand-in for the system header of the same name: the component runtime. Classes are found among
// those of the modules that announced themselves (see platform/linux/ComponentRuntime.h) and,
// behind them, among the registered ones: the key CLSID\{id}\InProcServer32 below HKEY_CLASSES_ROOT
// of the registry service names a shared object that exports DllGetClassObject. All functions may
// be called from any thread.
#pragma once

#include <unknwn.h>

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
}
