// A third party's module for the tests of the component runtime.
#include "platform/component/ClassFactory.h"
#include "platform/component/ModuleLock.h"
#include "tests/platform/TestThing.h"

using platform::ClassFactory;
using platform::ComPtr;

#define EXPORTED extern "C" __attribute__((visibility("default")))

EXPORTED HRESULT DllGetClassObject(REFCLSID classId, REFIID iid, void** result) {
  if (!base::SameGuid(classId, testing_support::kModuleClass)) return CLASS_E_CLASSNOTAVAILABLE;
  const auto make = []() -> IUnknown* {
    return static_cast<testing_support::INumber*>(
        new testing_support::Thing(testing_support::kModuleNumber));
  };
  return ComPtr<ClassFactory>::Attach(new ClassFactory(make))->QueryInterface(iid, result);
}

EXPORTED HRESULT DllCanUnloadNow() {
  return platform::ModuleLock::AnyHeld() ? S_FALSE : S_OK;
}

EXPORTED HRESULT DllRegisterServer() {
  return 5;
}

// The end of a resource that has no start.
extern "C" {
__attribute__((visibility("default"))) char half_end = 0;
}
