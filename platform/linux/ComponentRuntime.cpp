// The functions of objbase.h: translation between their callers and the class table.
#include "platform/linux/ComponentRuntime.h"

#include <cstdlib>

#include "base/CodePage.h"
#include "platform/component/ClassFactory.h"
#include "platform/component/ComPtr.h"
#include "platform/component/Guard.h"
#include "platform/linux/CategoryManager.h"
#include "platform/linux/ClassTable.h"
#include "platform/linux/LoadedModules.h"
#include "platform/linux/WideText.h"

using platform::ComPtr;
using platform::Guard;

namespace {

// How often the thread has called CoInitialize or OleInitialize without its counterpart.
thread_local int initialised = 0;

HRESULT MakeCategoryManagerFactory(REFIID iid, void** result) {
  const auto factory = ComPtr<platform::ClassFactory>::Attach(new platform::ClassFactory(
      []() -> IUnknown* { return static_cast<ICatInformation*>(new platform::CategoryManager); }));
  return factory->QueryInterface(iid, result);
}

HRESULT FindClassObject(REFCLSID classId, REFIID iid, void** result) {
  if (base::SameGuid(classId, CLSID_StdComponentCategoriesMgr)) {
    return MakeCategoryManagerFactory(iid, result);
  }
  if (const auto announced = platform::AnnouncedFunction(classId)) {
    return announced(classId, iid, result);
  }
  const std::string module = platform::RegisteredModule(classId);
  if (module.empty()) return REGDB_E_CLASSNOTREG;
  return platform::GetModuleClassObject(module, classId, iid, result);
}

}  // namespace

HRESULT CoInitialize(void*) {
  return initialised++ == 0 ? S_OK : S_FALSE;
}

void CoUninitialize() {
  if (initialised > 0) --initialised;
}

HRESULT OleInitialize(void* reserved) {
  return CoInitialize(reserved);
}

void OleUninitialize() {
  CoUninitialize();
}

HRESULT CoGetClassObject(REFCLSID classId, DWORD context, void*, REFIID iid, void** result) {
  if (!result) return E_POINTER;
  *result = nullptr;
  if (!(context & CLSCTX_INPROC_SERVER)) return REGDB_E_CLASSNOTREG;
  const HRESULT status = Guard([&] { return FindClassObject(classId, iid, result); });
  if (FAILED(status)) *result = nullptr;
  return SUCCEEDED(status) && !*result ? CO_E_ERRORINDLL : status;
}

HRESULT CoCreateInstance(REFCLSID classId, IUnknown* outer, DWORD context, REFIID iid,
                         void** result) {
  if (!result) return E_POINTER;
  *result = nullptr;
  ComPtr<IClassFactory> factory;
  const HRESULT status =
      CoGetClassObject(classId, context, nullptr, IID_IClassFactory, factory.PutVoid());
  if (FAILED(status)) return status;
  return Guard([&] { return factory->CreateInstance(outer, iid, result); });
}

void CoFreeUnusedLibraries() {
  Guard([] {
    platform::UnloadUnusedModules();
    return S_OK;
  });
}

HRESULT ProgIDFromCLSID(REFCLSID classId, LPOLESTR* progId) {
  if (!progId) return E_INVALIDARG;
  *progId = nullptr;
  return Guard([&] {
    const std::string text = platform::ProgIdOf(classId);
    return text.empty() ? REGDB_E_CLASSNOTREG : platform::GiveWideText(text, progId);
  });
}

HRESULT CLSIDFromProgID(LPCOLESTR progId, CLSID* classId) {
  if (!progId || !classId) return E_INVALIDARG;
  *classId = {};
  return Guard([&] {
    const std::optional<CLSID> found = platform::ClassOfProgId(base::FromWide(progId));
    if (!found) return CO_E_CLASSSTRING;
    *classId = *found;
    return S_OK;
  });
}

HRESULT StringFromCLSID(REFCLSID classId, LPOLESTR* text) {
  if (!text) return E_INVALIDARG;
  *text = nullptr;
  return Guard([&] { return platform::GiveWideText(platform::GuidText(classId), text); });
}

HRESULT CLSIDFromString(LPCOLESTR text, CLSID* classId) {
  if (!classId) return E_INVALIDARG;
  *classId = {};
  if (!text) return S_OK;  // no text stands for the id of zeros
  return Guard([&] {
    const std::optional<GUID> id = platform::GuidOf(base::FromWide(text));
    if (!id) return CLSIDFromProgID(text, classId);
    *classId = *id;
    return S_OK;
  });
}

int StringFromGUID2(REFGUID id, LPOLESTR text, int size) {
  constexpr int kNeeded = base::kGuidTextLength + 1;
  if (!text || size < kNeeded) return 0;
  OLECHAR printed[kNeeded];
  base::PrintGuid(id, printed);
  std::copy_n(printed, kNeeded, text);
  return kNeeded;
}

void* CoTaskMemAlloc(std::size_t size) {
  return std::malloc(size > 0 ? size : 1);
}

void CoTaskMemFree(void* block) {
  std::free(block);
}
