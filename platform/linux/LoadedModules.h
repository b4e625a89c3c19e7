// The shared objects of registered classes, kept loaded from their first use on.
#pragma once

#include <unknwn.h>

#include <string>

namespace platform {

// Asks the module's DllGetClassObject, loading the module when it is not yet. CO_E_DLLNOTFOUND when
// it does not load, CO_E_ERRORINDLL when it lacks the function. Any thread.
HRESULT GetModuleClassObject(const std::string& path, REFCLSID classId, REFIID iid, void** result);

// Unloads the modules whose DllCanUnloadNow says S_OK and that no thread is in the middle of
// asking.
void UnloadUnusedModules();

}  // namespace platform
