// What only a DLL has: its entry point, and registration for one user.
#include <windows.h>

#include <cwchar>

#include "component/ModuleLife.h"
#include "component/Registration.h"
#include "platform/component/Guard.h"

extern "C" {

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, void* processEnds) {
  if (reason == DLL_PROCESS_ATTACH) {
    DisableThreadLibraryCalls(module);
    component::ModuleStart();
  }
  if (reason == DLL_PROCESS_DETACH) {
    processEnds ? component::ModuleStopAtProcessEnd() : component::ModuleStop();
  }
  return TRUE;
}

// `regsvr32 /n /i:user Fxbox4.dll` registers for the current user alone, with /u the reverse. The
// plain /i behind a registration of the machine has nothing to add.
HRESULT STDAPICALLTYPE DllInstall(BOOL install, LPCWSTR commandLine) {
  if (!commandLine || !*commandLine) return S_OK;
  if (_wcsicmp(commandLine, L"user") != 0) return E_INVALIDARG;
  return platform::Guard([install] {
    return install ? component::RegisterForUser() : component::UnregisterForUser();
  });
}

}  // extern "C"
