// The exported functions: translation between their callers and the rooms behind.
#include "component/Fxbox4.h"

#include "base/KvString.h"
#include "base/Workers.h"
#include "component/ModuleClasses.h"
#include "component/ModuleLife.h"
#include "component/Registration.h"
#include "core/PdibFilterCreator.h"
#include "filters/FilterClasses.h"
#include "platform/LargeBlock.h"
#include "platform/component/ComPtr.h"
#include "platform/component/Guard.h"
#include "toolkit/Backend.h"

using platform::ComPtr;
using platform::Guard;

#ifndef _WIN32
namespace {

// Here, and not in a file of its own, so that it also comes with the static library.
struct ModuleLife {
  ModuleLife() { component::ModuleStart(); }
  ~ModuleLife() { component::ModuleStop(); }
} const moduleLife;

}  // namespace
#endif

HRESULT STDAPICALLTYPE FxboxCreateCreator(REFIID iid, void** result) {
  if (!result) return E_POINTER;
  *result = nullptr;
  return Guard([&] {
    const auto creator =
        ComPtr<CPdibFilterCreator>::Attach(new CPdibFilterCreator(FilterClasses()));
    return creator->QueryInterface(iid, result);
  });
}

const FilterClass* STDAPICALLTYPE FxboxFilterClasses(int* count) {
  const FilterClassTable classes = FilterClasses();
  if (count) *count = static_cast<int>(classes.size());
  return classes.data();
}

HRESULT STDAPICALLTYPE FxboxPumpEvents(BOOL wait) {
  return Guard([&] {
    toolkit::Backend* const backend = toolkit::OpenBackend();
    return backend && backend->Pump(wait != FALSE) ? S_OK : S_FALSE;
  });
}

HRESULT STDAPICALLTYPE FxboxSetWorkers(IAnimWorkers* workers) {
  return Guard([&] {
    base::SetWorkers(workers);
    platform::FreeKeptBlocks();
    return S_OK;
  });
}

HRESULT STDAPICALLTYPE FxboxSetString(void* string, const char* text) {
  if (!string) return E_POINTER;
  return Guard([&] {
    *static_cast<KvString*>(string) = text;
    return S_OK;
  });
}

HRESULT STDAPICALLTYPE DllGetClassObject(REFCLSID classId, REFIID iid, void** result) {
  return component::GetClassObject(classId, iid, result);
}

HRESULT STDAPICALLTYPE DllCanUnloadNow() {
  if (platform::ModuleLock::AnyHeld()) return S_FALSE;
  platform::FreeKeptBlocks();
  return S_OK;
}

HRESULT STDAPICALLTYPE DllRegisterServer() {
  return Guard([] { return component::RegisterModule(); });
}

HRESULT STDAPICALLTYPE DllUnregisterServer() {
  return Guard([] { return component::UnregisterModule(); });
}
